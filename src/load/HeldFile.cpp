#include "load/HeldFile.h"

#include <string_view>

namespace Kestrany::IdentityServices {
namespace {

constexpr std::size_t longestPath = 32768; ///< UTF-16 units, with the zero.

bool StartsWith(std::wstring_view text, std::wstring_view start)
{
    return text.substr(0, start.size()) == start;
}

/// Whether the platform takes a path as it stands: it strips points, and knows names of devices.
bool MeansItself(const std::wstring& path)
{
    std::wstring full(path.size() + 1, L'\0');
    const DWORD length = GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    return length == path.size() && StartsWith(full, path);
}

/// Without the prefix of paths that are taken literally, where the path means the same without it: loaders and trust
/// providers ask for plain paths. A plain one of full length is for processes alone that gave the file such a one.
std::wstring PlainPath(const std::wstring& path, const std::wstring& given)
{
    constexpr std::wstring_view literal = L"\\\\?\\";
    constexpr std::wstring_view literalShare = L"\\\\?\\UNC\\";
    if (!StartsWith(path, literal))
        return path;
    const std::wstring plain =
        StartsWith(path, literalShare) ? L"\\\\" + path.substr(literalShare.size()) : path.substr(literal.size());
    return (plain.size() < MAX_PATH || plain == given) && MeansItself(plain) ? plain : path;
}

/// Empty with the platform's error code on failure.
std::wstring OwnPath(const FileHandle& file, DWORD& error)
{
    std::wstring path(longestPath, L'\0');
    // Not every server of a share lets names be normalized; the opened one is free of links too. And not every volume
    // has a letter.
    for (const DWORD form : {FILE_NAME_NORMALIZED | VOLUME_NAME_DOS, FILE_NAME_OPENED | VOLUME_NAME_DOS,
                             FILE_NAME_NORMALIZED | VOLUME_NAME_GUID})
    {
        const DWORD length = GetFinalPathNameByHandleW(file.Get(), path.data(), longestPath, form);
        if (length > 0 && length < longestPath)
        {
            error = ERROR_SUCCESS;
            return path.substr(0, length);
        }
        error = GetLastError();
    }
    return {};
}

} // namespace

HeldFile::HeldFile(const std::wstring& path) : file_(path, FILE_SHARE_READ), error_(file_.Error()), path_(path)
{
    if (!file_.IsOpen())
        return;
    const std::wstring own = OwnPath(file_, error_);
    if (IsHeld())
        path_ = PlainPath(own, path);
}

} // namespace Kestrany::IdentityServices
