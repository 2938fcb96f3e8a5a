#include <optional>
#include <utility>
#include <vector>

#include "base/FileContents.h"
#include "base/MessageFormat.h"
#include "base/Paths.h"
#include "base/TextConversion.h"
#include "locate/ClientConfigDocument.h"
#include "locate/FileSearch.h"
#include "locate/SSOPathResolver.h"

namespace Kestrany::IdentityServices {
namespace {

constexpr wchar_t clientConfigFileName[] = L"Orlindex.config";

std::wstring ShownValue(const std::string& key, const ClientConfigValues& values)
{
    if (key == "bundleId")
        return Widen(values.bundleId);
    if (key == "VersionCompatibilityConfigfilePath")
        return Widen(values.versionCompatibilityConfigFilePath);
    if (key == "searchPaths")
        return Widen(values.searchPaths);
    if (key == "supportBothLocalAndAdmin")
        return values.supportBothLocalAndAdmin ? L"true" : L"false";
    return {};
}

/// Without the empty entries: they are never searched, and a file may hold millions of them.
std::vector<std::wstring> SplitSearchPaths(const std::wstring& text)
{
    constexpr wchar_t separator = L';';
    std::vector<std::wstring> entries;
    std::size_t begin = text.find_first_not_of(separator);
    while (begin != std::wstring::npos)
    {
        const std::size_t end = text.find(separator, begin);
        entries.push_back(text.substr(begin, end - begin));
        begin = text.find_first_not_of(separator, end);
    }
    return entries;
}

void TellSettings(StartObserver& observer, const std::vector<ClientConfigKey>& keys, const ClientConfigValues& values)
{
    for (const ClientConfigKey& key : keys)
    {
        const SettingState found = key.rightType ? SettingState::Set : SettingState::WrongType;
        observer.OnSetting({key.name, key.present ? found : SettingState::Missing, ShownValue(key.name, values)});
    }
}

/// Sets the settings that no file changes when it goes, however the reading of the file ended. They are made with it,
/// so that setting them takes no memory.
class FixedSettings
{
public:
    explicit FixedSettings(ServerSettings& settings) : settings_(settings)
    {
        fixed_.searchName = L"Pellwick.exe";
        fixed_.executableName = L"Pellwick.exe";
        fixed_.defaultProcessName = "Kestrany.TALIX.DefaultProcess-v2";
        fixed_.defaultServerName = "Kestrany.TALIX.DefaultServer-v2";
    }
    ~FixedSettings()
    {
        settings_.searchName.swap(fixed_.searchName);
        settings_.executableName.swap(fixed_.executableName);
        settings_.defaultProcessName.swap(fixed_.defaultProcessName);
        settings_.defaultServerName.swap(fixed_.defaultServerName);
    }
    FixedSettings(const FixedSettings&) = delete;
    FixedSettings& operator=(const FixedSettings&) = delete;

private:
    ServerSettings& settings_;
    ServerSettings fixed_;
};

} // namespace

bool SSOPathResolver::FindClientConfigFile()
{
    if (!clientConfigFilePath_.empty())
        return true;
    if (!clientConfigFileOverride_.empty())
    {
        clientConfigFilePath_ = clientConfigFileOverride_;
        if (PathExists(clientConfigFilePath_))
            Log(Message(L"Found client config file override at %1%", clientConfigFilePath_), TALIXLog::Info);
        else
            Log(Message(L"Failed to find client config file override %1%", clientConfigFilePath_), TALIXLog::Error);
        return true; // On purpose also where it is missing: an override ends the search.
    }

    SearchList directories = {{L"%ExePath%", DirectoryOrigin::Host},
                              {L"%SSOServicesModulePath%", DirectoryOrigin::Library}};
    for (const std::wstring& directory : extraClientConfigSearchPaths_)
        directories.push_back({directory, DirectoryOrigin::Added});
    ExpandSearchList(directories);
    const std::wstring lines = DirectoryLines(directories);
    Log(Message(L"Searching for client config file %1% in the following paths:\n%2%", clientConfigFileName, lines),
        TALIXLog::Info);
    if (Search(StartFile::ClientConfig, clientConfigFileName, directories, clientConfigFilePath_))
    {
        Log(Message(L"Found client config file at %1%", clientConfigFilePath_), TALIXLog::Info);
        return true;
    }
    clientConfigFilePath_ = clientConfigFileName; // Read from the current directory if it lies there, on purpose.
    Log(Message(L"Failed to find client config file %1% in the following paths:\n%2%", clientConfigFileName, lines),
        TALIXLog::Warning);
    return false;
}

bool SSOPathResolver::LoadClientConfig()
{
    if (clientConfigLoadState_ != NotLoaded)
        return clientConfigLoadState_ == Loaded; // Never: see ClientConfigLoadState.
    const FixedSettings fixedSettings(serverSettings_);
    clientConfigLoadState_ = LoadAttempted;
    if (clientConfigFilePath_.empty())
        FindClientConfigFile();
    if (PathExists(clientConfigFilePath_))
        ReadClientConfigFile();
    return true;
}

void SSOPathResolver::ReadClientConfigFile()
{
    Log(Message(L"Loading client config file %1%", clientConfigFilePath_), TALIXLog::Info);
    DWORD readError = ERROR_SUCCESS;
    ClientConfigReading reading;
    const std::optional<std::string> contents = ReadFileContents(clientConfigFilePath_, &readError);
    const std::optional<ClientConfigValues> values =
        contents ? ReadClientConfigDocument(*contents, observer_ ? &reading : nullptr)
                 : std::optional<ClientConfigValues>();
    if (observer_)
        observer_->OnDocument({StartFile::ClientConfig, clientConfigFilePath_, readError,
                               contents && !values ? std::optional(reading.error) : std::nullopt});
    if (!values)
    {
        Log(Message(L"Failed to load client config file %1%. Invalid file format.", clientConfigFilePath_),
            TALIXLog::Error);
        return;
    }
    serverSettings_.bundleId = Widen(values->bundleId);
    serverSettings_.versionCompatibilityConfigFilePath = Widen(values->versionCompatibilityConfigFilePath);
    if (const std::wstring searchPaths = Widen(values->searchPaths); !searchPaths.empty())
    {
        serverSettings_.searchPaths = SplitSearchPaths(searchPaths);
        ExpandPathVariables(serverSettings_.searchPaths);
    }
    serverSettings_.supportBothLocalAndAdmin = values->supportBothLocalAndAdmin;
    Log(Message(L"Configuration to support both local and admin: %1%.",
                serverSettings_.supportBothLocalAndAdmin ? L"Yes" : L"No"),
        TALIXLog::Info);
    if (observer_)
        TellSettings(*observer_, reading.keys, *values);
}

void SSOPathResolver::SetClientConfigFileOverride(std::wstring path)
{
    if (clientConfigLoadState_ != NotLoaded)
    {
        Log(Message(L"Failed to set client config file override %1% since client config file %2% is already loaded",
                    path, clientConfigFilePath_),
            TALIXLog::Error);
        return;
    }
    clientConfigFilePath_.clear();
    Log(Message(L"Client config file override set to %1%", path), TALIXLog::Info);
    clientConfigFileOverride_ = std::move(path);
}

} // namespace Kestrany::IdentityServices
