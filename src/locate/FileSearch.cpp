#include "locate/FileSearch.h"

#include <utility>

#include "base/Paths.h"
#include "locate/ReferenceExpansion.h"

namespace Kestrany::IdentityServices {
namespace {

DirectoryState Examine(const std::wstring& directory, const std::wstring& fileName, std::wstring& candidate)
{
    if (directory.empty())
        return DirectoryState::Empty;
    if (directory.find(L'\0') != std::wstring::npos)
        return DirectoryState::EmbeddedZero;
    if (BeginsWithReference(directory))
        return DirectoryState::NoValue;
    candidate = JoinPath(directory, fileName);
    return PathExists(candidate) ? DirectoryState::Holds : DirectoryState::DoesNotHold;
}

} // namespace

bool FindFileInPaths(const std::wstring& fileName, const SearchList& directories, std::wstring& found,
                     std::vector<DirectoryState>* states)
{
    found.clear();
    for (const SearchDirectory& directory : directories)
    {
        std::wstring candidate;
        const DirectoryState state = Examine(directory.path, fileName, candidate);
        if (states)
            states->push_back(state);
        if (state == DirectoryState::Holds)
        {
            found = std::move(candidate);
            return true;
        }
    }
    return false;
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
