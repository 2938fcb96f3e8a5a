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

bool NamesOneModule(const std::wstring& text)
{
    // Neither an embedded zero, at which the platform ends the text, nor an end that it strips.
    if (text.empty() || text.find(L'\0') != std::wstring::npos || text.back() == L'.' || text.back() == L' ')
        return false;
    return path(text).is_absolute() && path(text).has_extension();
}

bool PathExists(const std::wstring& text)
{
    if (text.empty())
        return false;
    boost::system::error_code error;
    return boost::filesystem::exists(boost::filesystem::status(path(text), error));
}

} // namespace Kestrany::IdentityServices
