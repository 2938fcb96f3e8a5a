#ifndef AGENT_PLATFORM_FOLDERS_H
#define AGENT_PLATFORM_FOLDERS_H

#include <string>

namespace Kestrany::Agent {

/// Environment variable that names another settings folder. Hosts and servers of different folders do not see each
/// other: tests can run side by side.
inline constexpr wchar_t SettingsFolderVariable[] = L"PELLWICK_SIMULATOR_DATA";

/// Environment variable that names the scenario file of the simulated source.
inline constexpr wchar_t ScenarioVariable[] = L"PELLWICK_SCENARIO";

/// The user's folder of the identity services; empty if the user has no local application data.
std::wstring DataFolder();

/// Full path of the folder of the agent's files for the user. Determined once per process; empty if the user has no
/// local application data.
const std::wstring& SettingsFolder();

/// The full path of `path`, without a separator at its end; empty for an empty path.
std::wstring FullPath(const std::wstring& path);

/// The value of an environment variable; empty if it is not set.
std::wstring EnvironmentText(const wchar_t* name);

/// The full path of a file in the folder of this process's executable.
std::wstring FileBesideExecutable(const wchar_t* name);

/// Creates the missing folders above `path`.
void CreateFoldersAbove(const std::wstring& path);

} // namespace Kestrany::Agent

#endif
