#ifndef AGENT_PLATFORM_ATOMICFILE_H
#define AGENT_PLATFORM_ATOMICFILE_H

#include <cstddef>
#include <optional>
#include <string>

namespace Kestrany::Agent {

/// Reads a file. nullopt, with GetLastError, if it cannot be read or has more than `limit` bytes.
std::optional<std::string> ReadFileWithin(const std::wstring& path, std::size_t limit);

/// Whether an error code means that there is no such file.
bool IsMissingFile(unsigned long error);

/// Creates or replaces a file. Readers, and a crash, find either the complete old file or the complete new one. False,
/// with GetLastError, on failure: the old file then stays.
bool ReplaceFileAtomically(const std::wstring& path, const std::string& bytes);

/// Removes the temporary files of ReplaceFileAtomically in a folder that ended processes have left.
void RemoveUnfinishedFiles(const std::wstring& folder);

} // namespace Kestrany::Agent

#endif
