#ifndef ORLINDEX_LOCATE_FILESEARCH_H
#define ORLINDEX_LOCATE_FILESEARCH_H

#include <string>
#include <vector>

#include "load/StartObserver.h"

namespace Kestrany::IdentityServices {

struct SearchDirectory
{
    std::wstring path;
    DirectoryOrigin origin;
};

using SearchList = std::vector<SearchDirectory>;

/// Finds the first directory, in list order, that holds an entry of that name, and fills its full name. Three kinds of
/// directory hold nothing. An empty one, and one that begins with a reference without value, would be looked up in the
/// current directory, which anyone may choose. One with a zero inside would be looked up without the file's name: the
/// platform ends the path at the zero. Fills the state of each directory up to the one that holds the file, where asked
/// to.
bool FindFileInPaths(const std::wstring& fileName, const SearchList& directories, std::wstring& found,
                     std::vector<DirectoryState>* states = nullptr);

/// The directories one a line, as messages show them.
std::wstring DirectoryLines(const SearchList& directories);

} // namespace Kestrany::IdentityServices

#endif
