#ifndef ORLINDEX_LOCATE_FILESEARCH_H
#define ORLINDEX_LOCATE_FILESEARCH_H

#include <string>
#include <vector>

namespace Kestrany::IdentityServices {

/// Finds the first directory, in list order, that holds an entry of that name, and fills its full name. An empty
/// directory, or one that begins with a reference without value, holds nothing: joined with the name they would be
/// looked up in the current directory, which anyone may choose.
bool FindFileInPaths(const std::wstring& fileName, const std::vector<std::wstring>& directories, std::wstring& found);

/// The directories one a line, as messages show them.
std::wstring DirectoryLines(const std::vector<std::wstring>& directories);

} // namespace Kestrany::IdentityServices

#endif
