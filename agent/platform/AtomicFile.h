#ifndef AGENT_PLATFORM_ATOMICFILE_H
#define AGENT_PLATFORM_ATOMICFILE_H

#include <string>

namespace Kestrany::Agent {

/// Whether an error code means that there is no such file.
bool IsMissingFile(unsigned long error);

/// Creates or replaces a file. Readers, and a crash, find either the complete old file or the complete new one. False,
/// with GetLastError, on failure: the old file then stays.
bool ReplaceFileAtomically(const std::wstring& path, const std::string& bytes);

/// Removes the temporary files of ReplaceFileAtomically in a folder that ended processes have left.
void RemoveUnfinishedFiles(const std::wstring& folder);

} // namespace Kestrany::Agent

#endif
