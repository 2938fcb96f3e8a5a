#include "Text.h"

#include <windows.h>

namespace DesktopHost {

std::wstring FromUtf8(const char* text)
{
    const int size = MultiByteToWideChar(CP_UTF8, 0, text, -1, nullptr, 0);
    if (size <= 1)
        return {};
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text, -1, wide.data(), size);
    wide.pop_back(); // the terminating zero
    return wide;
}

std::wstring ProgramFolder()
{
    std::wstring path(MAX_PATH, L'\0');
    for (;;)
    {
        const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length == 0)
            return {};
        if (length < path.size())
        {
            path.resize(length);
            break;
        }
        path.resize(path.size() * 2); // The path was cut off.
    }
    const std::size_t end = path.find_last_of(L'\\');
    return end == std::wstring::npos ? std::wstring() : path.substr(0, end);
}

std::wstring DoctorCommand()
{
    std::wstring folder = ProgramFolder();
    // Before the quotation mark, a backslash (as in "C:\") would escape it.
    if (!folder.empty() && folder.back() == L':')
        folder += L"\\.";
    return L"orlindex-doctor --host \"" + folder + L"\" --load";
}

} // namespace DesktopHost
