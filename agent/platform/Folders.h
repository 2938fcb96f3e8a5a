#ifndef AGENT_PLATFORM_FOLDERS_H
#define AGENT_PLATFORM_FOLDERS_H

#include <string>

namespace Kestrany::Agent {

/// Environment variable that names another settings folder: hosts and servers of different folders do not see each
/// other, so that tests run side by side.
inline constexpr wchar_t SettingsFolderVariable[] = L"PELLWICK_SIMULATOR_DATA";

/// Environment variable that names the scenario file of the simulated source.
inline constexpr wchar_t ScenarioVariable[] = L"PELLWICK_SCENARIO";

/// The user's own folder of the identity services; empty when the user has no local application data.
std::wstring DataFolder();

/// Folder of what the simulator keeps for the user, by its full path. Looked up once a process; empty when the user has
/// no local application data.
const std::wstring& SettingsFolder();

/// The full path of what `path` names, without a separator at its end; empty for an empty one.
std::wstring FullPath(const std::wstring& path);

/// The value of an environment variable; empty when there is none.
std::wstring EnvironmentText(const wchar_t* name);

/// Creates the folders above `path` that do not exist.
void CreateFoldersAbove(const std::wstring& path);

} // namespace Kestrany::Agent

#endif
