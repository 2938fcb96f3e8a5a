// The manager: the instance, the plugin's interfaces, path variables, the client config file and the server
// application. StartUp.cpp has the load of the plugin.

#include "locate/SSOPathResolver.h"

#include <boost/algorithm/string/predicate.hpp>
#include <locale>
#include <utility>

#include <knownfolders.h>

#include "base/Files.h"
#include "base/Message.h"
#include "base/Paths.h"
#include "base/Platform.h"
#include "base/Product.h"
#include "base/Text.h"
#include "load/contract/ISSOClientFactory.h"
#include "locate/PathVariables.h"

namespace Kestrany::IdentityServices {
namespace {

using SharedText = std::shared_ptr<const std::wstring>;

SharedText Shared(std::wstring text)
{
    return std::make_shared<const std::wstring>(std::move(text));
}

SharedText ModuleLoadedMessage()
{
    return Shared(Message(L"%1% module loaded (Version: %2% Config: %3% File: %4%)", ProductModuleName,
                          Widen(ProductVersion), SDKBuildConfiguration, GetModuleFilePath(ProductModuleName)));
}

/// The messages for requests of an interface that a loaded plugin lacks.
struct MissingInterface
{
    SharedText client;
    SharedText clientPrivate;
    SharedText clientModule;
    SharedText serverManager;
};

/// Built before the first load, so that no request needs memory for them. Never destroyed: other threads may request an
/// interface while the process ends.
const MissingInterface& MissingInterfaceMessages()
{
    static const MissingInterface& messages = *new MissingInterface{
        Shared(L"Failed to obtain ISSOClient. ISSOClientFactory::GetSSOClient returned null."),
        Shared(L"Failed to obtain ISSOClientPrivate. ISSOClientFactory::GetSSOClientPrivate returned null."),
        Shared(L"Failed to obtain ISSOClientModule. ISSOClientFactory::GetSSOClientModule returned null."),
        Shared(L"Failed to obtain ISSOServerManager. ISSOClientFactory::GetSSOServerManager returned null.")};
    return messages;
}

/// Ignores all notifications. Used in a host, so that no step needs a null check.
class NullObserver final : public StartUpObserver
{
};

StartUpObserver& ObserverOf(const StartUpOverrides& overrides)
{
    static NullObserver nullObserver;
    return overrides.observer ? *overrides.observer : nullObserver;
}

/// Sets a flag for the lifetime of the object.
class FlagScope
{
public:
    explicit FlagScope(bool& flag) : flag_(flag) { flag_ = true; }
    FlagScope(const FlagScope&) = delete;
    FlagScope& operator=(const FlagScope&) = delete;
    ~FlagScope() { flag_ = false; }

private:
    bool& flag_;
};

std::wstring SettingText(const std::string& key, const ClientConfigValues& values)
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

SettingState SettingStateOf(const ClientConfigKey& key)
{
    if (!key.present)
        return SettingState::Missing;
    return key.rightType ? SettingState::Set : SettingState::WrongType;
}

struct PathVariable
{
    const wchar_t* name;
    std::wstring (*value)(SSOPathResolver& manager);
};

/// Uses the first row whose name matches. The values of the first four rows come from the manager, which resolves them
/// on first use.
const PathVariable pathVariables[] = {
    {L"SSOServerAppPath", [](SSOPathResolver& manager) { return manager.GetSSOServerAppPath(); }},
    {L"SSOServerAppExeDirPath", [](SSOPathResolver& manager) { return manager.GetSSOServerAppExeDirPath(); }},
    {L"SSOServerAppExeFile", [](SSOPathResolver& manager) { return manager.GetSSOServerAppExeFile(); }},
    {L"SSOServicesModulePath", [](SSOPathResolver& manager) { return manager.LibraryDirectory(); }},
    {L"ProgramFiles", [](SSOPathResolver&) { return GetKnownFolderPath(FOLDERID_ProgramFiles); }},
    {L"ExePath", [](SSOPathResolver& manager) { return manager.ExeDirectory(); }},
    {L"AppPath", [](SSOPathResolver& manager) { return manager.ExeDirectory(); }},
    {L"AppData", [](SSOPathResolver&) { return GetKnownFolderPath(FOLDERID_RoamingAppData); }},
    {L"LocalAppData", [](SSOPathResolver&) { return GetKnownFolderPath(FOLDERID_LocalAppData); }},
};

VariableLookup LookupIn(SSOPathResolver& manager)
{
    return
        [&manager](const std::wstring& name, std::wstring& value) { return manager.GetPathVariableValue(name, value); };
}

} // namespace

// The instance

std::atomic<SSOPathResolver*> SSOPathResolver::instance_ = nullptr;

SSOPathResolver::SSOPathResolver(VersionParts sdkVersion, LogSink logSink, StartUpOverrides overrides)
    : logSink_(std::move(logSink)), sdkVersion_(std::move(sdkVersion)), ssoServerAppPath_(overrides.serverAppDirectory),
      clientPluginModulePath_(overrides.clientPluginModule), overrides_(std::move(overrides)),
      observer_(ObserverOf(overrides_))
{
}

SSOPathResolver* SSOPathResolver::Create()
{
    const ProcessLockGuard guard(processLock);
    SSOPathResolver* manager = instance_.load(std::memory_order_relaxed);
    if (!manager)
    {
        manager = new SSOPathResolver(SplitVersion(ProductVersion), DefaultLogFunction);
        instance_.store(manager, std::memory_order_release);
    }
    return manager;
}

void SSOPathResolver::Forget()
{
    const ProcessLockGuard guard(processLock);
    // not covered: A stop forgets only after the manager returned the module's interface.
    if (SSOPathResolver* manager = instance_.load(std::memory_order_relaxed))
    {
        manager->pluginModule_ = nullptr; // Not released: the plugin stays loaded in the process.
        manager->pluginFactory_ = nullptr;
        manager->loadState_ = PluginNotAttempted;
    }
    instance_.store(nullptr, std::memory_order_release);
    pluginInterfaces = {};
}

void SSOPathResolver::Log(std::wstring message, LogLevel level) const
{
    if (logSink_)
        logSink_(std::move(message), level);
}

// The plugin's interfaces

void SSOPathResolver::LogMissing(const ISSOClient*)
{
    LogSharedMessage(MissingInterfaceMessages().client, TALIXLog::Error);
}

void SSOPathResolver::LogMissing(const ISSOClientPrivate*)
{
    LogSharedMessage(MissingInterfaceMessages().clientPrivate, TALIXLog::Error);
}

void SSOPathResolver::LogMissing(const ISSOClientModule*)
{
    LogSharedMessage(MissingInterfaceMessages().clientModule, TALIXLog::Error);
}

void SSOPathResolver::LogMissing(const ISSOServerManager*)
{
    LogSharedMessage(MissingInterfaceMessages().serverManager, TALIXLog::Error);
}

bool SSOPathResolver::EnsureClientLoaded()
{
    const ProcessLockGuard guard(processLock);
    if (pluginFactory_)
        return true;
    try
    {
        MissingInterfaceMessages();
        if (!moduleLoadedMessage_)
            moduleLoadedMessage_ = ModuleLoadedMessage();
        LogSharedMessage(moduleLoadedMessage_, TALIXLog::Info);
        return LoadClientPluginModule() && pluginFactory_;
    }
    // not covered from here: Only an allocation for a message fails here.
    catch (...)
    {
        return false; // Only an allocation failure for a message ends here: the load has its own exception barrier.
    }
    // not covered to here
}

void SSOPathResolver::EnsureClientAfterInitialize()
{
    const ProcessLockGuard guard(processLock);
    if (!pluginInterfaces.ssoClient && pluginFactory_) // not covered: A start-up calls this only with a factory.
        pluginInterfaces.ssoClient = pluginFactory_->GetSSOClient();
}

// Path variables

std::wstring SSOPathResolver::ExeDirectory() const
{
    return overrides_.exeDirectory.empty() ? GetExeDirPath() : overrides_.exeDirectory;
}

std::wstring SSOPathResolver::LibraryDirectory() const
{
    // not covered: Branches of the compiler; both directories are used.
    return overrides_.libraryDirectory.empty() ? GetModuleDirPath(ProductModuleName) : overrides_.libraryDirectory;
}

bool SSOPathResolver::GetPathVariableValue(const std::wstring& name, std::wstring& value)
{
    value.clear();
    for (const PathVariable& variable : pathVariables)
    {
        if (boost::algorithm::iequals(name, variable.name, std::locale::classic()))
        {
            value = variable.value(*this);
            break;
        }
    }
    return !value.empty();
}

std::int32_t SSOPathResolver::ExpandPathVariables(std::wstring& text)
{
    return IdentityServices::ExpandPathVariables(text, LookupIn(*this));
}

void SSOPathResolver::ExpandPathVariables(std::vector<std::wstring>& texts)
{
    IdentityServices::ExpandPathVariables(texts, LookupIn(*this));
}

void SSOPathResolver::ExpandSearchList(SearchList& directories)
{
    for (SearchDirectory& directory : directories)
        ExpandPathVariables(directory.path);
}

SearchResult SSOPathResolver::Search(StartUpFile file, const std::wstring& fileName, SearchList directories) const
{
    SearchResult result = FindFileInPaths(fileName, std::move(directories));
    observer_.OnSearch(file, result);
    return result;
}

// The client config file

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
        return true; // On purpose even if the file is missing: an override ends the search.
    }

    SearchList directories = {{L"%ExePath%", DirectoryOrigin::Host},
                              {L"%SSOServicesModulePath%", DirectoryOrigin::Library}};
    for (const std::wstring& directory : extraClientConfigSearchPaths_)
        directories.push_back({directory, DirectoryOrigin::Added});
    ExpandSearchList(directories);
    const std::wstring lines = DirectoryLines(directories);
    Log(Message(L"Searching for client config file %1% in the following paths:\n%2%", ClientConfigFileName, lines),
        TALIXLog::Info);
    clientConfigFilePath_ = Search(StartUpFile::ClientConfig, ClientConfigFileName, std::move(directories)).found;
    if (!clientConfigFilePath_.empty())
    {
        Log(Message(L"Found client config file at %1%", clientConfigFilePath_), TALIXLog::Info);
        return true;
    }
    clientConfigFilePath_ = ClientConfigFileName; // On purpose: such a file in the current directory is then read.
    Log(Message(L"Failed to find client config file %1% in the following paths:\n%2%", ClientConfigFileName, lines),
        TALIXLog::Warning);
    return false;
}

bool SSOPathResolver::LoadClientConfig()
{
    if (clientConfigLoadState_ != NotLoaded)
        return clientConfigLoadState_ == Loaded; // Always false: see ClientConfigLoadState.
    const FixedSettings fixedSettings(serverSettings_);
    clientConfigLoadState_ = LoadAttempted;
    if (clientConfigFilePath_.empty())
        FindClientConfigFile();
    ReadClientConfigFile();
    return true;
}

void SSOPathResolver::ReadClientConfigFile()
{
    const FileContents contents = ReadFileContents(clientConfigFilePath_);
    if (!contents.IsRead() && !PathExists(clientConfigFilePath_))
        return; // Without a message: the search reported it.
    Log(Message(L"Loading client config file %1%", clientConfigFilePath_), TALIXLog::Info);
    const ParsedClientConfig config = contents.IsRead() ? ParseClientConfig(contents.bytes) : ParsedClientConfig();
    observer_.OnJsonFile({StartUpFile::ClientConfig, clientConfigFilePath_, contents.error,
                          contents.IsRead() && !config.values ? std::optional(config.error) : std::nullopt});
    if (!config.values)
    {
        Log(Message(L"Failed to load client config file %1%. Invalid file format.", clientConfigFilePath_),
            TALIXLog::Error);
        return;
    }
    serverSettings_.bundleId = Widen(config.values->bundleId);
    serverSettings_.versionCompatibilityConfigFilePath = Widen(config.values->versionCompatibilityConfigFilePath);
    if (const std::wstring searchPaths = Widen(config.values->searchPaths); !searchPaths.empty())
    {
        serverSettings_.searchPaths = SplitSearchPaths(searchPaths);
        ExpandPathVariables(serverSettings_.searchPaths);
    }
    serverSettings_.supportBothLocalAndAdmin = config.values->supportBothLocalAndAdmin;
    Log(Message(L"Configuration to support both local and admin: %1%.",
                serverSettings_.supportBothLocalAndAdmin ? L"Yes" : L"No"),
        TALIXLog::Info);
    for (const ClientConfigKey& key : config.keys)
        observer_.OnSetting({key.name, SettingStateOf(key), SettingText(key.name, *config.values)});
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

void SSOPathResolver::AddClientConfigSearchPath(std::wstring directory)
{
    extraClientConfigSearchPaths_.push_back(std::move(directory));
}

// The server application

bool SSOPathResolver::FindSSOServerApp()
{
    if (!ssoServerAppPath_.empty())
        return true;
    if (findingServerApp_)
        return false; // A search directory refers to the server application's own directory, which has no value yet.
    const FlagScope finding(findingServerApp_);

    if (clientConfigLoadState_ == NotLoaded)
        LoadClientConfig();
    SearchList directories = ServerAppSearchList();
    const std::wstring lines = DirectoryLines(directories);
    const std::wstring& name = serverSettings_.searchName;
    Log(Message(L"Searching for SSO server app %1% in the following paths:\n%2%", name, lines), TALIXLog::Info);
    if (name.empty())
        return false;

    const SearchResult result = Search(StartUpFile::ServerApplication, name, std::move(directories));
    if (result.found.empty())
    {
        Log(Message(L"Failed to find SSO server app %1% in the following paths:\n%2%", name, lines), TALIXLog::Error);
        return false;
    }
    ssoServerAppPath_ = ParentPath(result.found);
    Log(Message(L"Found SSO server app at %1%", GetSSOServerAppExeFile()), TALIXLog::Info);
    return true;
}

/// The order is the priority: the library's directory, the host's, those of the client config file. The registry's
/// directory comes last, or first if local and admin installations are both supported.
SearchList SSOPathResolver::ServerAppSearchList()
{
    SearchList directories = {{L"%SSOServicesModulePath%", DirectoryOrigin::Library},
                              {L"%ExePath%", DirectoryOrigin::Host}};
    for (const std::wstring& directory : serverSettings_.searchPaths)
        directories.push_back({directory, DirectoryOrigin::ClientConfig});
    AddRegistryLocation(directories);
    ExpandSearchList(directories);
    return directories;
}

void SSOPathResolver::AddRegistryLocation(SearchList& searchList)
{
    const LatestRegistryLocation latest = GetLatestRegistryLocation(ServerApplicationKey);
    for (const RegistryKeyFinding& key : latest.keys)
        observer_.OnRegistryKey(key);
    if (!latest.found)
    {
        AddUnversionedRegistryLocation(searchList);
        return;
    }
    const std::wstring directory = Widen(latest.location);
    observer_.OnRegistryChoice(latest.key, directory);
    Log(Message(L"Getting latest Pellwick path from registry: %1%", directory), TALIXLog::Info);
    searchList.insert(serverSettings_.supportBothLocalAndAdmin ? searchList.begin() : searchList.end(),
                      {directory, DirectoryOrigin::Registry});
}

void SSOPathResolver::AddUnversionedRegistryLocation(SearchList& searchList)
{
    const RegistryKeyFinding key = ReadUnversionedLocation();
    observer_.OnRegistryKey(key);
    if (key.opened != ERROR_SUCCESS)
    {
        Log(Message(L"Unable to get Pellwick path from registry, failed with error: %1%", key.opened), TALIXLog::Info);
        return;
    }
    if (!key.location)
        return;
    observer_.OnRegistryChoice(key.key, *key.location);
    // Last even if local and admin installations are both supported: only a versioned location comes first.
    searchList.push_back({*key.location, DirectoryOrigin::Registry});
    Log(Message(L"Getting Pellwick path from registry: %1%", *key.location), TALIXLog::Info);
}

std::wstring SSOPathResolver::GetSSOServerAppPath()
{
    if (ssoServerAppPath_.empty())
        FindSSOServerApp();
    return ssoServerAppPath_;
}

std::wstring SSOPathResolver::GetSSOServerAppExeDirPath()
{
    // On purpose the same value, like the two path variables of these names.
    return GetSSOServerAppPath();
}

std::wstring SSOPathResolver::GetSSOServerAppExeFile()
{
    const std::wstring directory = GetSSOServerAppPath();
    return directory.empty() ? std::wstring() : JoinPath(directory, serverSettings_.executableName);
}

} // namespace Kestrany::IdentityServices
