#include "base/Paths.h"

#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>
#include <windows.h>

namespace Kestrany::IdentityServices {

using boost::filesystem::path;

namespace {

/// Whether a path exists, without opening the file. nullopt if the attributes do not decide: a link exists only if its
/// target does, and access to the attributes can be denied. Any other failure means no: a share that does not respond
/// causes only one time-out.
std::optional<bool> ExistsByAttributes(const std::wstring& text)
{
    const DWORD attributes = GetFileAttributesW(text.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
    {
        const DWORD error = GetLastError();
        const bool denied = error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION;
        return denied ? std::nullopt : std::optional(false);
    }
    return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0 ? std::optional(true) : std::nullopt;
}

} // namespace

std::wstring NormalizePath(const std::wstring& text)
{
    return path(text).lexically_normal().make_preferred().wstring();
}

std::wstring JoinPath(const std::wstring& directory, const std::wstring& name)
{
    return (path(directory) / name).wstring();
}

std::wstring ParentPath(const std::wstring& text)
{
    return path(text).parent_path().wstring();
}

std::optional<ModulePathDefect> FindModulePathDefect(const std::wstring& text)
{
    if (text.empty())
        return ModulePathDefect::Empty;
    if (text.find(L'\0') != std::wstring::npos)
        return ModulePathDefect::EmbeddedZero;
    if (text.back() == L'.' || text.back() == L' ')
        return ModulePathDefect::StrippedEnd;
    if (!path(text).has_extension())
        return ModulePathDefect::NoExtension;
    return std::nullopt;
}

bool PathExists(const std::wstring& text)
{
    if (text.empty())
        return false;
    if (const std::optional<bool> exists = ExistsByAttributes(text))
        return *exists;
    boost::system::error_code error;
    return boost::filesystem::exists(boost::filesystem::status(path(text), error));
}

} // namespace Kestrany::IdentityServices
