#ifndef ORLINDEX_BASE_PLATFORM_H
#define ORLINDEX_BASE_PLATFORM_H

#include <shtypes.h>
#include <string>

namespace Kestrany::IdentityServices {

// What the platform says of itself and of this process. Texts are empty if the platform fails.

std::wstring GetKnownFolderPath(const KNOWNFOLDERID& folderId);

/// Directory of the host process's executable.
std::wstring GetExeDirPath();

/// Full file name of a module that is loaded in this process.
std::wstring GetModuleFilePath(const std::wstring& moduleName);

/// Directory of a module that is loaded in this process.
std::wstring GetModuleDirPath(const std::wstring& moduleName);

/// Whether this process is a 32-bit one on 64-bit Windows. A query that fails counts as no.
bool IsWow64();

/// Whether the caller runs under the local system account, which no user can sign in to. A query that fails counts as
/// no.
bool RunsAsLocalSystem();

/// The platform's text for an error code, line end included: log messages show it as it is.
std::wstring GetSystemErrorText(unsigned long code);

} // namespace Kestrany::IdentityServices

#endif
