#ifndef ORLINDEX_BASE_PLATFORM_H
#define ORLINDEX_BASE_PLATFORM_H

#include <shtypes.h>
#include <string>

namespace Kestrany::IdentityServices {

// Information about the platform and this process. Texts are empty if the platform fails.

std::wstring GetKnownFolderPath(const KNOWNFOLDERID& folderId);

/// Directory of the host process's executable.
std::wstring GetExeDirPath();

/// Full path of a module that is loaded in this process.
std::wstring GetModuleFilePath(const std::wstring& moduleName);

/// Directory of a module that is loaded in this process.
std::wstring GetModuleDirPath(const std::wstring& moduleName);

/// Whether this is a 32-bit process on 64-bit Windows. False if the query fails.
bool IsWow64();

/// Whether the caller runs under the local system account, where no user can sign in. False if the query fails.
bool RunsAsLocalSystem();

/// The platform's text for an error code, including the line end, which log messages show unchanged.
std::wstring GetSystemErrorText(unsigned long code);

} // namespace Kestrany::IdentityServices

#endif
