#ifndef ORLINDEX_BASE_PATHS_H
#define ORLINDEX_BASE_PATHS_H

#include <string>

namespace Kestrany::IdentityServices {

/// Without dot components and doubled separators, with the separators that the platform's loader asks for.
std::wstring NormalizePath(const std::wstring& path);

std::wstring JoinPath(const std::wstring& directory, const std::wstring& name);

/// The path without its last element.
std::wstring ParentPath(const std::wstring& path);

/// Whether the platform's loader and its file functions take `path` for the same file. The loader searches for a path
/// that is not absolute, and appends ".dll" to a file name without extension.
bool NamesOneModule(const std::wstring& path);

/// Whether anything lies at `path`: a file, a directory, whatever. An empty path names nothing.
bool PathExists(const std::wstring& path);

} // namespace Kestrany::IdentityServices

#endif
