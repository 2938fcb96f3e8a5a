#ifndef ORLINDEX_LOCATE_FILESEARCH_H
#define ORLINDEX_LOCATE_FILESEARCH_H

#include <string>
#include <vector>

namespace Kestrany::IdentityServices {

/// Where a search directory comes from.
enum class DirectoryOrigin
{
    Library,          ///< The library's directory.
    Host,             ///< The directory of the host's executable.
    Added,            ///< Added by the host.
    ClientConfig,     ///< Named in the client config file.
    Registry,         ///< Registered by the server application's installer.
    ServerApplication ///< The server application's directory.
};

struct SearchDirectory
{
    std::wstring path;
    DirectoryOrigin origin;
};

using SearchList = std::vector<SearchDirectory>;

enum class DirectoryState
{
    Holds,
    DoesNotHold,
    Empty,        ///< The text is empty: not searched.
    EmbeddedZero, ///< Contains a zero character, where the platform would end the path: not searched.
    NoValue,      ///< Begins with a path variable that has no value: not searched.
    NotSearched   ///< An earlier directory holds the file.
};

/// The result of a search.
struct SearchResult
{
    std::wstring fileName;
    SearchList directories; ///< In the order of the search.
    /// States of the directories, in their order, up to the one that holds the file.
    std::vector<DirectoryState> states;
    std::wstring found; ///< Full name of the file; empty if no directory holds it.

    DirectoryState StateOf(std::size_t index) const
    {
        return index < states.size() ? states[index] : DirectoryState::NotSearched;
    }
};

/// Finds the first directory, in list order, that contains `fileName`. Three kinds of directory are not searched. An
/// empty directory, and one that begins with a path variable without value, would be resolved against the current
/// directory, which anyone may choose. For a directory with an embedded zero, the platform would end the path at the
/// zero and ignore the file name.
SearchResult FindFileInPaths(const std::wstring& fileName, SearchList directories);

/// The directories, one per line, for log messages.
std::wstring DirectoryLines(const SearchList& directories);

} // namespace Kestrany::IdentityServices

#endif
