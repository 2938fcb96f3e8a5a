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

/// Why the platform's loader would take a path for another file than its file functions do.
enum class ModulePathDefect
{
    Empty,
    EmbeddedZero, ///< The platform ends the text there.
    StrippedEnd,  ///< It ends with a point or a space, which the platform strips.
    NoExtension   ///< The loader would append ".dll".
};

/// Of a path that a module is to be loaded by; nullopt if there is no defect. A relative path has none by itself: its
/// file is loaded by its full path.
std::optional<ModulePathDefect> FindModulePathDefect(const std::wstring& path);

/// Whether anything lies at `path`: a file, a directory, whatever. An empty path names nothing.
bool PathExists(const std::wstring& path);

} // namespace Kestrany::IdentityServices

#endif
