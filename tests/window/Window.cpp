#include "window/Window.h"

#include <algorithm>
#include <utility>

namespace WindowTest {

namespace {

using Clock = std::chrono::steady_clock;

/// Some windows raise no event when they change. The driver reads the window again after this time, in milliseconds.
constexpr DWORD LongestSilence = 100;

struct Search
{
    const std::wstring* title;
    HWND found;
};

BOOL CALLBACK Compare(HWND window, LPARAM parameter)
{
    auto* const search = reinterpret_cast<Search*>(parameter);
    wchar_t text[256] = L"";
    // Of another process, this reads the title without asking the window.
    GetWindowTextW(window, text, 256);
    if (IsWindowVisible(window) == FALSE || *search->title != text)
        return TRUE;
    search->found = window;
    return FALSE;
}

HWND FindByTitle(const std::wstring& title)
{
    Search search{&title, nullptr};
    EnumWindows(&Compare, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

/// The events wake the message queue, and the conditions are checked then.
void CALLBACK Ignore(HWINEVENTHOOK, DWORD, HWND, LONG, LONG, DWORD, DWORD) {}

class EventHook
{
public:
    explicit EventHook(DWORD process)
        : hook_(SetWinEventHook(EVENT_MIN, EVENT_MAX, nullptr, &Ignore, process, 0, WINEVENT_OUTOFCONTEXT))
    {
    }
    EventHook(const EventHook&) = delete;
    EventHook& operator=(const EventHook&) = delete;
    ~EventHook() { UnhookWinEvent(hook_); }

private:
    HWINEVENTHOOK hook_;
};

bool WaitUntil(DWORD process, std::chrono::milliseconds timeout, const std::function<bool()>& condition)
{
    const EventHook hook(process);
    const auto limit = Clock::now() + timeout;
    while (!condition())
    {
        if (Clock::now() >= limit)
            return false;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, LongestSilence, QS_ALLINPUT);
        MSG message{};
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE)
            DispatchMessageW(&message);
    }
    return true;
}

BOOL CALLBACK AddChild(HWND child, LPARAM children)
{
    reinterpret_cast<std::vector<HWND>*>(children)->push_back(child);
    return TRUE;
}

} // namespace

Window::Window(std::wstring title, std::chrono::milliseconds timeout) : title_(std::move(title)), timeout_(timeout)
{
    if (!WaitUntil(0, timeout_, [this] { return (handle_ = FindByTitle(title_)) != nullptr; }))
        throw Failure{L"there is no window with the title \"" + title_ + L"\""};
    thread_ = GetWindowThreadProcessId(handle_, &process_);
}

HWND Window::GetControl(int id) const
{
    const HWND control = GetDlgItem(handle_, id);
    if (control == nullptr)
        throw Failure{L"the window has no control " + std::to_wstring(id)};
    return control;
}

std::vector<Control> Window::Controls() const
{
    std::vector<HWND> children;
    EnumChildWindows(handle_, &AddChild, reinterpret_cast<LPARAM>(&children));
    std::vector<Control> controls;
    for (const HWND child : children)
    {
        if (GetParent(child) != handle_)
            continue; // a part of a control
        Control control;
        control.handle = child;
        control.id = GetDlgCtrlID(child);
        wchar_t name[64] = L"";
        GetClassNameW(child, name, 64);
        control.className = name;
        control.text = Text(child);
        GetWindowRect(child, &control.area);
        MapWindowPoints(nullptr, handle_, reinterpret_cast<POINT*>(&control.area), 2);
        const auto style = static_cast<DWORD>(GetWindowLongPtrW(child, GWL_STYLE));
        control.isVisible = (style & WS_VISIBLE) != 0;
        control.isEnabled = (style & WS_DISABLED) == 0;
        control.isTabStop = (style & WS_TABSTOP) != 0;
        controls.push_back(control);
    }
    return controls;
}

std::wstring Window::Text(HWND control) const
{
    std::wstring text(4096, L'\0');
    const LRESULT length = Send(control, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<std::size_t>(std::max<LRESULT>(length, 0)));
    return text;
}

LRESULT Window::Send(HWND target, UINT message, WPARAM wParam, LPARAM lParam) const
{
    DWORD_PTR result = 0;
    if (SendMessageTimeoutW(target, message, wParam, lParam, SMTO_NORMAL, static_cast<UINT>(timeout_.count()),
                            &result) == 0)
        throw Failure{L"the window \"" + title_ + L"\" does not respond to message " + std::to_wstring(message)};
    return static_cast<LRESULT>(result);
}

void Window::WaitFor(const std::wstring& what, const std::function<bool()>& condition) const
{
    if (!WaitUntil(process_, timeout_, condition))
        throw Failure{L"waited in vain for: " + what};
}

RemoteMemory::RemoteMemory(const Window& window, std::size_t size)
    : process_(OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE, window.Process()))
{
    if (process_ != nullptr)
        address_ = VirtualAllocEx(process_, nullptr, size, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
    if (address_ == nullptr)
        throw Failure{L"no memory in the process of the window"};
}

RemoteMemory::~RemoteMemory()
{
    VirtualFreeEx(process_, address_, 0, MEM_RELEASE);
    CloseHandle(process_);
}

void RemoteMemory::Write(std::size_t offset, const void* data, std::size_t size) const
{
    if (WriteProcessMemory(process_, Address() + offset, data, size, nullptr) == FALSE)
        throw Failure{L"the memory of the window's process cannot be written"};
}

void RemoteMemory::Read(std::size_t offset, void* data, std::size_t size) const
{
    if (ReadProcessMemory(process_, Address() + offset, data, size, nullptr) == FALSE)
        throw Failure{L"the memory of the window's process cannot be read"};
}

} // namespace WindowTest
