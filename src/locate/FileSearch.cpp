#include "locate/FileSearch.h"

#include <utility>

#include "base/Paths.h"
#include "locate/PathVariables.h"

namespace Kestrany::IdentityServices {
namespace {

DirectoryState Examine(const std::wstring& directory, const std::wstring& fileName, std::wstring& candidate)
{
    if (directory.empty())
        return DirectoryState::Empty;
    if (directory.find(L'\0') != std::wstring::npos)
        return DirectoryState::EmbeddedZero;
    if (BeginsWithPathVariable(directory))
        return DirectoryState::NoValue;
    candidate = JoinPath(directory, fileName);
    return PathExists(candidate) ? DirectoryState::Holds : DirectoryState::DoesNotHold;
}

} // namespace

SearchResult FindFileInPaths(const std::wstring& fileName, SearchList directories)
{
    SearchResult result = {fileName, std::move(directories), {}, {}};
    for (const SearchDirectory& directory : result.directories)
    {
        std::wstring candidate;
        result.states.push_back(Examine(directory.path, fileName, candidate));
        if (result.states.back() == DirectoryState::Holds)
        {
            result.found = std::move(candidate);
            break;
        }
    }
    return result;
}

std::wstring DirectoryLines(const SearchList& directories)
{
    std::wstring lines;
    for (const SearchDirectory& directory : directories)
    {
        if (&directory != &directories.front())
            lines += L'\n';
        lines += directory.path;
    }
    return lines;
}

} // namespace Kestrany::IdentityServices
