#include "locate/FileSearch.h"

#include <boost/algorithm/string/join.hpp>
#include <utility>

#include "base/Paths.h"

namespace Kestrany::IdentityServices {

bool FindFileInPaths(const std::wstring& fileName, const std::vector<std::wstring>& directories, std::wstring& found)
{
    found.clear();
    for (const std::wstring& directory : directories)
    {
        if (directory.empty() || directory.front() == L'%')
            continue;
        std::wstring candidate = JoinPath(directory, fileName);
        if (PathExists(candidate))
        {
            found = std::move(candidate);
            return true;
        }
    }
    return false;
}

std::wstring DirectoryLines(const std::vector<std::wstring>& directories)
{
    return boost::algorithm::join(directories, L"\n");
}

} // namespace Kestrany::IdentityServices
