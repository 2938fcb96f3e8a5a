#include "load/OwnPath.h"

namespace Kestrany::IdentityServices {
namespace {

constexpr DWORD longestPath = 32768; ///< UTF-16 units, with the zero.

/// Empty, with the platform's last error, where there is no path of that form.
std::wstring OwnPathOfForm(const FileHandle& file, DWORD form)
{
    std::wstring path(MAX_PATH, L'\0');
    DWORD length = GetFinalPathNameByHandleW(file.Get(), path.data(), MAX_PATH, form);
    if (length >= MAX_PATH && length < longestPath)
    {
        path.resize(longestPath);
        length = GetFinalPathNameByHandleW(file.Get(), path.data(), longestPath, form);
    }
    if (length >= path.size())
    {
        SetLastError(ERROR_FILENAME_EXCED_RANGE);
        length = 0;
    }
    path.resize(length);
    return path;
}

} // namespace

std::wstring OwnPathOf(const FileHandle& file, DWORD& error)
{
    // Not every server of a share lets names be normalized; the opened one is free of links too. And not every volume
    // has a letter.
    for (const DWORD form : {FILE_NAME_NORMALIZED | VOLUME_NAME_DOS, FILE_NAME_OPENED | VOLUME_NAME_DOS,
                             FILE_NAME_NORMALIZED | VOLUME_NAME_GUID})
    {
        std::wstring path = OwnPathOfForm(file, form);
        error = path.empty() ? GetLastError() : ERROR_SUCCESS;
        if (!path.empty())
            return path;
    }
    return {};
}

} // namespace Kestrany::IdentityServices
