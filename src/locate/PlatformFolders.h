#ifndef ORLINDEX_LOCATE_PLATFORMFOLDERS_H
#define ORLINDEX_LOCATE_PLATFORMFOLDERS_H

#include <shtypes.h>
#include <string>

namespace Kestrany::IdentityServices {

// Each answers an empty text where the platform fails.

std::wstring GetKnownFolderPath(const KNOWNFOLDERID& folderId);

/// Directory of the host process's executable.
std::wstring GetExeDirPath();

/// Full file name of a module that is loaded in this process.
std::wstring GetModuleFilePath(const std::wstring& moduleName);

/// Directory of a module that is loaded in this process.
std::wstring GetModuleDirPath(const std::wstring& moduleName);

} // namespace Kestrany::IdentityServices

#endif
