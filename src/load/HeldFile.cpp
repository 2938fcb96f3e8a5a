#include "load/HeldFile.h"

#include <string_view>

#include "load/OwnPath.h"

namespace Kestrany::IdentityServices {
namespace {

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

} // namespace

HeldFile::HeldFile(const std::wstring& path) : file_(path, FILE_SHARE_READ), error_(file_.Error()), path_(path)
{
    if (!file_.IsOpen())
        return;
    ownPath_ = OwnPathOf(file_, error_);
    if (IsHeld())
        path_ = PlainPath(ownPath_, path);
}

} // namespace Kestrany::IdentityServices
