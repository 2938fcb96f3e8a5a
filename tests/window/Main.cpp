// Operates a window of another process, and waits for what it shows: window_driver TITLE COMMAND [ARGUMENT...]...
//
// Reads the state of the controls by window messages, so that no picture has to be interpreted. Controls are named by
// their numbers. The commands run in their order; the first one that fails ends the program with 1 and prints the
// controls.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <exception>
#include <functional>
#include <map>
#include <string>

#include <windows.h>

#include <shellapi.h>

#include "base/Text.h"
#include "support/Patience.h"
#include "support/Platform.h"
#include "window/Checks.h"
#include "window/Window.h"

namespace WindowTest {

namespace {

using Kestrany::IdentityServices::Narrow;

void Print(const std::wstring& text)
{
    std::printf("%s\n", Narrow(text).c_str());
}

class Arguments
{
public:
    explicit Arguments(std::deque<std::wstring> arguments) : arguments_(std::move(arguments)) {}

    bool IsEmpty() const { return arguments_.empty(); }
    std::wstring Text()
    {
        if (arguments_.empty())
            throw Failure{L"an argument is missing"};
        std::wstring first = arguments_.front();
        arguments_.pop_front();
        return first;
    }
    int Number() { return std::stoi(Text()); }

private:
    std::deque<std::wstring> arguments_;
};

bool IsEnabled(HWND control)
{
    return (static_cast<DWORD>(GetWindowLongPtrW(control, GWL_STYLE)) & WS_DISABLED) == 0;
}

bool IsShown(HWND control)
{
    return (static_cast<DWORD>(GetWindowLongPtrW(control, GWL_STYLE)) & WS_VISIBLE) != 0;
}

HWND Focus(const Window& window)
{
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    return GetGUIThreadInfo(window.Thread(), &info) != FALSE ? info.hwndFocus : nullptr;
}

std::wstring Clipboard()
{
    std::wstring text;
    if (OpenClipboard(nullptr) == FALSE)
        return text;
    if (const HANDLE data = GetClipboardData(CF_UNICODETEXT); data != nullptr)
    {
        if (const auto* const place = static_cast<const wchar_t*>(GlobalLock(data)); place != nullptr)
            text = place;
        GlobalUnlock(data);
    }
    CloseClipboard();
    return text;
}

void PrintControls(const Window& window)
{
    for (const Control& control : window.Controls())
        std::printf("%d %s%s%s%s \"%s\"\n", control.id, Narrow(control.className).c_str(),
                    control.isVisible ? "" : " hidden", control.isEnabled ? "" : " disabled",
                    control.handle == Focus(window) ? " focus" : "", Narrow(control.text).c_str());
}

void WaitForText(const Window& window, Arguments& arguments)
{
    const HWND control = window.GetControl(arguments.Number());
    const std::wstring text = arguments.Text();
    window.WaitFor(L"the text \"" + text + L"\"",
                   [&] { return window.Text(control).find(text) != std::wstring::npos; });
}

void WaitForChange(const Window& window, Arguments& arguments)
{
    const HWND control = window.GetControl(arguments.Number());
    const std::wstring before = arguments.Text();
    window.WaitFor(L"another text than \"" + before + L"\"", [&] { return window.Text(control) != before; });
}

void WaitForRow(const Window& window, Arguments& arguments)
{
    const HWND list = window.GetControl(arguments.Number());
    const std::wstring text = arguments.Text();
    window.WaitFor(L"the row \"" + text + L"\"", [&] {
        const std::vector<std::wstring> rows = Rows(window, list);
        return std::any_of(rows.begin(), rows.end(),
                           [&](const std::wstring& row) { return row.find(text) != std::wstring::npos; });
    });
}

/// A window whose thread waits for something else does not respond, and Send fails after the time-out.
void CheckResponsive(const Window& window, int count)
{
    unsigned long long longest = 0;
    for (int i = 0; i < count; ++i)
    {
        const unsigned long long before = GetTickCount64();
        window.Send(window.Handle(), WM_NULL, 0, 0);
        longest = std::max(longest, GetTickCount64() - before);
    }
    std::printf("responded %d times, after at most %llu ms\n", count, longest);
}

using Command = std::function<void(const Window&, Arguments&)>;

/// Waits until a property of a control has a value.
Command WaitForState(const wchar_t* what, bool (*has)(HWND), bool wanted)
{
    return [=](const Window& window, Arguments& arguments) {
        const HWND control = window.GetControl(arguments.Number());
        window.WaitFor(what, [&] { return has(control) == wanted; });
    };
}

const std::map<std::wstring, Command>& Commands()
{
    static const std::map<std::wstring, Command> commands = {
        // Waiting.
        {L"text", WaitForText},
        {L"changed", WaitForChange},
        {L"row", WaitForRow},
        {L"enabled", WaitForState(L"an enabled control", IsEnabled, true)},
        {L"disabled", WaitForState(L"a disabled control", IsEnabled, false)},
        {L"shown", WaitForState(L"a visible control", IsShown, true)},
        {L"hidden", WaitForState(L"a hidden control", IsShown, false)},
        {L"clipboard",
         [](const Window& window, Arguments& arguments) {
             const std::wstring text = arguments.Text();
             window.WaitFor(L"the clipboard with \"" + text + L"\"", [&] { return Clipboard() == text; });
         }},
        {L"focus",
         [](const Window& window, Arguments& arguments) {
             const HWND control = window.GetControl(arguments.Number());
             window.WaitFor(L"the focus", [&] { return Focus(window) == control; });
         }},
        {L"gone", [](const Window& window,
                     Arguments&) { window.WaitFor(L"the end of the window", [&] { return window.IsGone(); }); }},
        // Operating.
        {L"press", [](const Window& window,
                      Arguments& arguments) { PostMessageW(window.GetControl(arguments.Number()), BM_CLICK, 0, 0); }},
        {L"close", [](const Window& window, Arguments&) { PostMessageW(window.Handle(), WM_CLOSE, 0, 0); }},
        {L"activate",
         [](const Window& window, Arguments&) {
             SetForegroundWindow(window.Handle());
             window.WaitFor(L"the active window", [&] { return GetForegroundWindow() == window.Handle(); });
         }},
        {L"resolution",
         [](const Window& window, Arguments& arguments) {
             const int from = arguments.Number();
             ChangeDpi(window, static_cast<UINT>(from), static_cast<UINT>(arguments.Number()));
         }},
        {L"setting-changed",
         [](const Window& window, Arguments& arguments) {
             const std::wstring name = arguments.Text();
             window.Send(window.Handle(), WM_SETTINGCHANGE, 0, reinterpret_cast<LPARAM>(name.c_str()));
         }},
        // Checking and printing.
        {L"responsive",
         [](const Window& window, Arguments& arguments) { CheckResponsive(window, arguments.Number()); }},
        {L"names",
         [](const Window& window, Arguments&) {
             CheckNames(window);
             CheckMnemonics(window);
         }},
        {L"layout", [](const Window& window,
                       Arguments& arguments) { CheckLayout(window, static_cast<UINT>(arguments.Number())); }},
        {L"print",
         [](const Window& window, Arguments& arguments) { Print(window.Text(window.GetControl(arguments.Number()))); }},
        {L"rows",
         [](const Window& window, Arguments& arguments) {
             for (const std::wstring& row : Rows(window, window.GetControl(arguments.Number())))
                 Print(row);
         }},
        {L"size",
         [](const Window& window, Arguments&) {
             RECT area{};
             GetWindowRect(window.Handle(), &area);
             std::printf("%ld %ld\n", area.right - area.left, area.bottom - area.top);
         }},
        {L"controls", [](const Window& window, Arguments&) { PrintControls(window); }},
        {L"number",
         [](const Window& window, Arguments&) {
             const std::uint64_t number = OrlindexTest::NumberOnDisplay(window.Handle());
             std::printf("%llu\n", static_cast<unsigned long long>(number));
         }},
    };
    return commands;
}

int Run(Arguments arguments)
{
    const Window window(arguments.Text(), OrlindexTest::Patience);
    std::wstring name;
    try
    {
        while (!arguments.IsEmpty())
        {
            name = arguments.Text();
            const auto command = Commands().find(name);
            if (command == Commands().end())
                throw Failure{L"there is no such command"};
            command->second(window, arguments);
        }
    }
    catch (const Failure& failure)
    {
        Print(L"failed: " + name + L": " + failure.text);
        if (!window.IsGone())
            PrintControls(window);
        return 1;
    }
    return 0;
}

} // namespace

} // namespace WindowTest

int main()
{
    using namespace WindowTest;
    // The resolution of the monitors, not that of a program that is scaled.
    SetProcessDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
    try
    {
        int count = 0;
        wchar_t** const texts = CommandLineToArgvW(GetCommandLineW(), &count);
        std::deque<std::wstring> arguments(texts + 1, texts + count);
        LocalFree(texts);
        return Run(Arguments(arguments));
    }
    catch (const Failure& failure)
    {
        Print(L"failed: " + failure.text);
    }
    catch (const std::exception& error)
    {
        std::printf("failed: %s\n", error.what());
    }
    return 1;
}
