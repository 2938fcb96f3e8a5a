// What a start tells its observer. A host has none: there each of these is a null check.

#include <utility>

#include "locate/SSOPathResolver.h"

namespace Kestrany::IdentityServices {
namespace {

SearchFinding Describe(StartFile file, const std::wstring& fileName, const SearchList& directories,
                       const std::vector<DirectoryState>& states, const std::wstring& found)
{
    SearchFinding finding = {file, fileName, {}, found};
    for (std::size_t index = 0; index < directories.size(); ++index)
    {
        const DirectoryState state = index < states.size() ? states[index] : DirectoryState::NotSearched;
        finding.directories.push_back({directories[index].path, directories[index].origin, state});
    }
    return finding;
}

} // namespace

bool SSOPathResolver::Search(StartFile file, const std::wstring& fileName, const SearchList& directories,
                             std::wstring& found) const
{
    if (!observer_)
        return FindFileInPaths(fileName, directories, found);
    std::vector<DirectoryState> states;
    const bool result = FindFileInPaths(fileName, directories, found, &states);
    observer_->OnSearch(Describe(file, fileName, directories, states, found));
    return result;
}

void SSOPathResolver::TellStep(LoadStep step, LoadState state, DWORD error) const
{
    if (observer_)
        observer_->OnLoadStep({step, state, error});
}

void SSOPathResolver::TellEnd(LoadStep step, DWORD error) const
{
    TellStep(step, error == ERROR_SUCCESS ? LoadState::Done : LoadState::Failed, error);
}

void SSOPathResolver::TellObject(PluginObject object, const void* answer) const
{
    if (observer_)
        observer_->OnPluginObject(object, answer != nullptr);
}

} // namespace Kestrany::IdentityServices
