#ifndef ORLINDEX_BASE_FILECONTENTS_H
#define ORLINDEX_BASE_FILECONTENTS_H

#include <optional>
#include <string>
#include <windows.h>

namespace Kestrany::IdentityServices {

/// Largest file that is read into memory, in bytes. Configuration files are a few hundred; a parsed document takes up
/// to a hundred times its text, and that memory is the host's.
inline constexpr unsigned long long LargestFile = 8ull * 1024 * 1024;

/// All bytes of a file; nothing when it cannot be read (a directory or a pipe, say) or is larger than LargestFile.
/// Fills the platform's error code, where asked to.
std::optional<std::string> ReadFileContents(const std::wstring& path, DWORD* error = nullptr);

} // namespace Kestrany::IdentityServices

#endif
