#ifndef ORLINDEX_LOCATE_FILESEARCH_H
#define ORLINDEX_LOCATE_FILESEARCH_H

#include <string>
#include <vector>

namespace Kestrany::IdentityServices {

/// Why a directory is searched.
enum class DirectoryOrigin
{
    Library,          ///< The library's own.
    Host,             ///< The host executable's.
    Added,            ///< Added by the host.
    ClientConfig,     ///< Named in the client config file.
    Registry,         ///< Registered by the server application's installer.
    ServerApplication ///< The server application's.
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
    Empty,        ///< An empty text: not searched.
    EmbeddedZero, ///< Contains a zero character, at which the platform would end the path: not searched.
    NoValue,      ///< Begins with a path variable that has no value: not searched.
    NotSearched   ///< An earlier one holds the file.
};

/// What a search found.
struct SearchResult
{
    std::wstring fileName;
    SearchList directories; ///< In the order of the search.
    /// Of the directories, in their order, up to the one that holds the file.
    std::vector<DirectoryState> states;
    std::wstring found; ///< Full name of the file; empty if no directory holds it.

    DirectoryState StateOf(std::size_t index) const
    {
        return index < states.size() ? states[index] : DirectoryState::NotSearched;
    }
};

/// Finds the first directory, in list order, that holds an entry of that name. Three kinds of directory are not
/// searched. An empty one, and one that begins with a path variable without value, would be looked up in the current
/// directory, which anyone may choose. One with an embedded zero would be looked up without the file's name: the
/// platform ends the path at the zero.
SearchResult FindFileInPaths(const std::wstring& fileName, SearchList directories);

/// The directories one a line, as messages show them.
std::wstring DirectoryLines(const SearchList& directories);

} // namespace Kestrany::IdentityServices

#endif
