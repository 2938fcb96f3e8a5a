// A complete host with a window: signs the user in and out while the window stays responsive, and says what to do if
// sign-in does not start.

#include <windows.h>

#include <commctrl.h>

#include "MainWindow.h"

namespace {

int Run(HINSTANCE module, int show)
{
    INITCOMMONCONTROLSEX classes{};
    classes.dwSize = sizeof classes;
    classes.dwICC = ICC_STANDARD_CLASSES | ICC_LISTVIEW_CLASSES | ICC_PROGRESS_CLASS;
    InitCommonControlsEx(&classes);

    DesktopHost::MainWindow main;
    const HWND window = main.Create(module);
    if (window == nullptr)
        return 1;
    ShowWindow(window, show);
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0)
    {
        if (IsDialogMessageW(window, &message) != FALSE) // Tab, mnemonics, Enter and Esc
            continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return static_cast<int>(message.wParam);
}

} // namespace

int WINAPI WinMain(HINSTANCE module, HINSTANCE, LPSTR, int show)
{
    return Run(module, show);
}
