#ifndef ORLINDEX_BASE_PATHS_H
#define ORLINDEX_BASE_PATHS_H

#include <optional>
#include <string>

namespace Kestrany::IdentityServices {

/// The path without dot components and doubled separators, with the separators that the platform's loader requires.
std::wstring NormalizePath(const std::wstring& path);

std::wstring JoinPath(const std::wstring& directory, const std::wstring& name);

/// The path without its last element.
std::wstring ParentPath(const std::wstring& path);

/// Why the platform's loader would resolve a path to another file than its file functions do.
enum class ModulePathDefect
{
    Empty,
    EmbeddedZero, ///< The platform ends the path there.
    StrippedEnd,  ///< It ends with a dot or a space, which the platform strips.
    NoExtension   ///< The loader would append ".dll".
};

/// The defect of a path that a module would be loaded by; nullopt if there is none. A relative path is not a defect:
/// its file is loaded by its full path.
std::optional<ModulePathDefect> FindModulePathDefect(const std::wstring& path);

/// Whether `path` exists: as a file, a directory or anything else. An empty path does not exist.
bool PathExists(const std::wstring& path);

} // namespace Kestrany::IdentityServices

#endif
