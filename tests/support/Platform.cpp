#include "Platform.h"

#include <array>
#include <stdexcept>

#include "Handle.h"

namespace OrlindexTest {

namespace {

/// Wine does not count the handles of a process. The value of a handle is its index in the process's table, and a new
/// one takes the lowest free index. So many that no gap is left below: the last one is higher if one was left open.
std::intptr_t HighestOfManyHandles()
{
    std::array<Handle, 1024> handles;
    for (Handle& handle : handles)
        handle = Handle(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    return reinterpret_cast<std::intptr_t>(handles.back().get());
}

} // namespace

bool RunsUnderWine()
{
    static const bool wine = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
    return wine;
}

std::intptr_t MeasureOpenHandles()
{
    if (RunsUnderWine())
        return HighestOfManyHandles();
    DWORD count = 0;
    if (!GetProcessHandleCount(GetCurrentProcess(), &count))
        throw std::runtime_error("the handles of this process cannot be counted");
    return static_cast<std::intptr_t>(count);
}

bool StartProcess(const std::wstring& executable, const std::wstring& command, DWORD flags, const wchar_t* directory,
                  STARTUPINFOW& startup, PROCESS_INFORMATION& started)
{
    // On a busy machine Wine sometimes fails with an internal error before the process runs.
    const int attempts = RunsUnderWine() ? 3 : 1;
    for (int attempt = 1;; ++attempt)
    {
        std::wstring writable = command;
        if (CreateProcessW(executable.c_str(), writable.data(), nullptr, nullptr, TRUE, flags, nullptr, directory,
                           &startup, &started))
            return true;
        if (GetLastError() != ERROR_INTERNAL_ERROR || attempt == attempts)
            return false;
    }
}

int MostCrashesOfVerification()
{
    return RunsUnderWine() ? 1 : 0; // On Wine a certificate of another kind makes it crash, and nothing else does.
}

DWORD ExitCodeOfInvalidParameter()
{
    constexpr DWORD InvalidRuntimeParameter = 0xC0000417;
    constexpr DWORD FastFailure = 0xC0000409;
    return RunsUnderWine() ? InvalidRuntimeParameter : FastFailure;
}

std::uint64_t NumberOnDisplay(HWND window)
{
    return reinterpret_cast<std::uintptr_t>(GetPropW(window, L"__wine_x11_whole_window"));
}

void EndAtUnhandledExceptions()
{
    // Wine unwinds the thread first, and a frame of the other compiler then returns to address 0 for ever.
    SetUnhandledExceptionFilter([](EXCEPTION_POINTERS* exception) -> LONG {
        TerminateProcess(GetCurrentProcess(), exception->ExceptionRecord->ExceptionCode);
        return EXCEPTION_EXECUTE_HANDLER;
    });
}

} // namespace OrlindexTest
