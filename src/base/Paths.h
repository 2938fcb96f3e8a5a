#ifndef ORLINDEX_BASE_PATHS_H
#define ORLINDEX_BASE_PATHS_H

#include <optional>
#include <string>

namespace Kestrany::IdentityServices {

/// Without dot components and doubled separators, with the separators that the platform's loader asks for.
std::wstring NormalizePath(const std::wstring& path);

std::wstring JoinPath(const std::wstring& directory, const std::wstring& name);

/// The path without its last element.
std::wstring ParentPath(const std::wstring& path);

/// Why the platform's loader would not take a path for the file that its file functions take it for.
enum class ModulePathDefect
{
    Empty,
    EmbeddedZero, ///< The platform ends the text there.
    StrippedEnd,  ///< It ends with a point or a space, which the platform strips.
    NotAbsolute,  ///< The loader would search for it.
    NoExtension   ///< The loader would append ".dll".
};

std::optional<ModulePathDefect> FindModulePathDefect(const std::wstring& path);

/// Whether anything lies at `path`: a file, a directory, whatever. An empty path names nothing.
bool PathExists(const std::wstring& path);

} // namespace Kestrany::IdentityServices

#endif
