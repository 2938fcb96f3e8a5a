#ifndef AGENT_PLATFORM_ATOMICFILE_H
#define AGENT_PLATFORM_ATOMICFILE_H

#include <cstddef>
#include <optional>
#include <string>

namespace Kestrany::Agent {

/// The file's bytes; nothing, with GetLastError, when it cannot be read or has more than `limit` bytes.
std::optional<std::string> ReadFileWithin(const std::wstring& path, std::size_t limit);

/// Whether an error says that there is no such file.
bool IsMissingFile(unsigned long error);

/// Puts a file with these bytes in the place of the one that is there, if any. Whoever reads, and a crash, meets the
/// old file or the new one, whole. False, with GetLastError, when the old one stays.
bool ReplaceFileAtomically(const std::wstring& path, const std::string& bytes);

/// Removes what ReplaceFileAtomically was about to put into the folder in processes that have ended since.
void RemoveUnfinishedFiles(const std::wstring& folder);

} // namespace Kestrany::Agent

#endif
