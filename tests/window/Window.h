#ifndef TESTS_WINDOW_WINDOW_H
#define TESTS_WINDOW_WINDOW_H

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include <windows.h>

namespace WindowTest {

/// Fails the command that runs: Main.cpp prints the text and ends with 1.
struct Failure
{
    std::wstring text;
};

struct Control
{
    HWND handle = nullptr;
    int id = 0;
    std::wstring className;
    std::wstring text;
    RECT area{}; ///< In the client area of the window.
    bool isVisible = false;
    bool isEnabled = false;
    bool isTabStop = false;
};

/// A visible top-level window of another process, by its title. All members that ask the window wait for its answer as
/// long as the time-out allows, and throw Failure after that.
class Window
{
public:
    /// Waits until the window is there.
    Window(std::wstring title, std::chrono::milliseconds timeout);

    HWND Handle() const { return handle_; }
    HWND GetControl(int id) const;

    /// The controls in the order of Tab.
    std::vector<Control> Controls() const;

    std::wstring Text(HWND control) const;
    LRESULT Send(HWND target, UINT message, WPARAM wParam, LPARAM lParam) const;

    /// Waits until the condition is true. It is checked after each change that the process of the window announces.
    void WaitFor(const std::wstring& what, const std::function<bool()>& condition) const;

    /// Whether the window has been closed.
    bool IsGone() const { return IsWindow(handle_) == FALSE; }

    DWORD Process() const { return process_; }
    DWORD Thread() const { return thread_; }

private:
    std::wstring title_;
    std::chrono::milliseconds timeout_;
    HWND handle_ = nullptr;
    DWORD process_ = 0;
    DWORD thread_ = 0;
};

/// Memory in the process of a window, for messages with pointers.
class RemoteMemory
{
public:
    RemoteMemory(const Window& window, std::size_t size);
    RemoteMemory(const RemoteMemory&) = delete;
    RemoteMemory& operator=(const RemoteMemory&) = delete;
    ~RemoteMemory();

    char* Address() const { return static_cast<char*>(address_); }
    void Write(std::size_t offset, const void* data, std::size_t size) const;
    void Read(std::size_t offset, void* data, std::size_t size) const;

private:
    HANDLE process_ = nullptr;
    void* address_ = nullptr;
};

} // namespace WindowTest

#endif
