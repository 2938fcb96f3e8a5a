#include "base/Paths.h"

#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>

namespace Kestrany::IdentityServices {

using boost::filesystem::path;

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
    boost::system::error_code error;
    return boost::filesystem::exists(boost::filesystem::status(path(text), error));
}

} // namespace Kestrany::IdentityServices
