// The program's window: begins what the user asks for, and shows what came of it.
#ifndef DESKTOP_HOST_MAINWINDOW_H
#define DESKTOP_HOST_MAINWINDOW_H

#include <memory>
#include <optional>

#include <windows.h>

#include "Appearance.h"
#include "HostState.h"
#include "Session.h"

namespace DesktopHost {

class MainWindow
{
public:
    MainWindow() = default;
    MainWindow(const MainWindow&) = delete;
    MainWindow& operator=(const MainWindow&) = delete;

    /// Null if the system is out of resources. This object must live as long as the window.
    HWND Create(HINSTANCE module);

private:
    static INT_PTR CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    static LRESULT CALLBACK ListProcedure(HWND list, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                          DWORD_PTR self);
    /// The result of the message; nullopt if the dialog shall handle it.
    std::optional<LRESULT> Handle(UINT message, WPARAM wParam, LPARAM lParam);

    void OnInit();
    void OnCommand(int control);
    void OnTimer(UINT_PTR timer);
    void OnDpiChanged(UINT dpi, const RECT& area);
    void OnClose();
    void OnDestroy();

    void Begin(Task task);
    void ReturnFocus();
    void Cancel();
    void Read();
    void TakeOutcomes();
    void Take(const Outcome& outcome);
    void OnEvent(const Event& event);

    void Update();
    void SetDpi(UINT dpi);
    HWND Control(int id) const { return GetDlgItem(window_, id); }

    HWND window_ = nullptr;
    UINT dpi_ = USER_DEFAULT_SCREEN_DPI;
    Font font_;
    Appearance appearance_;
    std::unique_ptr<Session> session_;
    HostState state_;
    HWND focusBefore_ = nullptr;    ///< When the running task began.
    HWND focusMeanwhile_ = nullptr; ///< While it runs, unless the user moves it.
    bool isReadBusy_ = false;       ///< A Read has no outcome yet.
    bool isReadDue_ = false;        ///< An event came after that Read began.
    bool isClosing_ = false;
};

} // namespace DesktopHost

#endif
