#include "base/Paths.h"

#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>
#include <windows.h>

namespace Kestrany::IdentityServices {

using boost::filesystem::path;

namespace {

/// Without opening the file. Nothing where that does not tell: a link is there only where what it leads to is.
std::optional<bool> ExistsAtAGlance(const std::wstring& text)
{
    const DWORD attributes = GetFileAttributesW(text.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
    {
        const DWORD error = GetLastError();
        const bool notFound = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
        return notFound ? std::optional(false) : std::nullopt;
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
    if (!path(text).is_absolute())
        return ModulePathDefect::NotAbsolute;
    if (!path(text).has_extension())
        return ModulePathDefect::NoExtension;
    return std::nullopt;
}

bool PathExists(const std::wstring& text)
{
    if (text.empty())
        return false;
    if (const std::optional<bool> exists = ExistsAtAGlance(text))
        return *exists;
    boost::system::error_code error;
    return boost::filesystem::exists(boost::filesystem::status(path(text), error));
}

} // namespace Kestrany::IdentityServices
