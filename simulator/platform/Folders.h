#ifndef SIMULATOR_PLATFORM_FOLDERS_H
#define SIMULATOR_PLATFORM_FOLDERS_H

#include <string>

namespace Kestrany::Simulator {

/// The user's own folder of the identity services; empty when the user has no local application data.
std::wstring DataFolder();

/// Creates the folders above `path` that do not exist.
void CreateFoldersAbove(const std::wstring& path);

} // namespace Kestrany::Simulator

#endif
