#ifndef ORLINDEX_LOCATE_SSOPATHRESOLVER_H
#define ORLINDEX_LOCATE_SSOPATHRESOLVER_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>
#include <windows.h>

#include "base/Log.h"
#include "base/ProcessLock.h"
#include "base/Versions.h"
#include "load/PluginInterfaces.h"
#include "locate/ClientConfig.h"
#include "locate/FileSearch.h"
#include "locate/StartUpObserver.h"

namespace Kestrany::IdentityServices {

class ISSOClientFactory;
class LockedFile;

enum ClientConfigLoadState : std::uint32_t
{
    NotLoaded = 0,
    Loaded = 1, ///< Never assigned, on purpose: every attempt, successful or not, ends as LoadAttempted.
    LoadAttempted = 2
};

enum PluginLoadState : std::uint32_t
{
    PluginNotAttempted = 0,
    PluginLoaded = 1,
    PluginAttempted = 2 ///< An attempt was started, and failed if this value stays. It is never repeated.
};

/// Values that the diagnostic tool overrides when it retraces a start-up for another host or for one module. Empty
/// texts are resolved as they are for a host.
struct StartUpOverrides
{
    std::wstring exeDirectory;
    std::wstring libraryDirectory;
    std::wstring serverAppDirectory;
    std::wstring clientPluginModule;
    StartUpObserver* observer = nullptr; ///< Null if there is none.
};

/// The one object that holds all resolved paths and the loaded plugin. It decides when a value is resolved, logs the
/// result and notifies the observer; the stages in this folder and in load/ do the work.
///
/// Nothing is resolved before it is requested: each resolver returns its stored result, or first calls the resolvers
/// that it depends on, calls its stage and stores the result. So the first request for a plugin interface runs the
/// whole start-up. The resolvers take no lock of their own; during a start-up they run under the process lock.
class SSOPathResolver
{
public:
    /// Creates the manager on first use. It is never destroyed. Inline, because every forwarded call uses it.
    static SSOPathResolver* GetInstance()
    {
        SSOPathResolver* const manager = instance_.load(std::memory_order_acquire);
        return manager ? manager : Create();
    }
    /// Creates a separate manager, which retraces a start-up with the given values.
    SSOPathResolver(VersionParts sdkVersion, LogSink logSink, StartUpOverrides overrides = {});
    /// Makes the next GetInstance create a new manager, and clears the plugin's interfaces. The old object stays,
    /// because other threads may still use it.
    static void Forget();

    /// Each loads the plugin on first use. Null without plugin, or (with a message) if the plugin returned null.
    /// Inline, because every forwarded call uses one.
    ISSOClient* GetSSOClient() { return Obtain(&PluginInterfaces::ssoClient); }
    ISSOClientPrivate* GetSSOClientPrivate() { return Obtain(&PluginInterfaces::ssoClientPrivate); }
    ISSOClientModule* GetSSOClientModule() { return Obtain(&PluginInterfaces::ssoClientModule); }
    ISSOServerManager* GetSSOServerManager() { return Obtain(&PluginInterfaces::ssoServerManager); }
    /// Asks the factory for its client again if it returned none during the load.
    void EnsureClientAfterInitialize();
    /// Loads the plugin, at most once per manager. Never throws.
    bool EnsureClientLoaded();
    /// Runs the steps of a load without loading the module. Returns whether the module would be loaded.
    bool CheckClientPlugin();

    void Log(std::wstring message, LogLevel level) const;

    /// Returns whether the file was found. Also true for an override that does not exist, and for every call after the
    /// first, even if the search failed and the path is the bare file name.
    bool FindClientConfigFile();
    /// Reads the client config file, once. Returns true for the call that makes the attempt, whatever its result; later
    /// calls return false, because the state never becomes Loaded.
    bool LoadClientConfig();
    /// Sets the path of the client config file; refused, with a message, after the file was read or an attempt was
    /// made.
    void SetClientConfigFileOverride(std::wstring path);
    void AddClientConfigSearchPath(std::wstring directory);

    bool FindSSOServerApp();
    std::wstring GetSSOServerAppPath();
    std::wstring GetSSOServerAppExeDirPath();
    std::wstring GetSSOServerAppExeFile();

    /// Finds the path of the plugin module that serves this library's version.
    bool FindCompatibleClientPlugin();
    void SetVersionCompatibilityFileOverride(std::wstring path);

    std::wstring ExeDirectory() const;
    std::wstring LibraryDirectory() const;
    bool GetPathVariableValue(const std::wstring& name, std::wstring& value);
    /// Returns the number of references in the text.
    std::int32_t ExpandPathVariables(std::wstring& text);
    void ExpandPathVariables(std::vector<std::wstring>& texts);

    const std::wstring& ClientConfigFilePath() const { return clientConfigFilePath_; }
    const std::wstring& ClientConfigFileOverride() const { return clientConfigFileOverride_; }
    const std::wstring& ClientPluginModulePath() const { return clientPluginModulePath_; }
    const std::wstring& VersionCompatibilityFilePath() const { return versionCompatibilityFilePath_; }
    const ServerSettings& Settings() const { return serverSettings_; }

private:
    static SSOPathResolver* Create();

    /// The common form for the four interfaces: loads the plugin on first use. If a loaded plugin lacks the interface,
    /// every request logs a message.
    template <class Interface>
    Interface* Obtain(Interface* PluginInterfaces::* which)
    {
        const ProcessLockGuard guard(processLock);
        // not covered: Counted for each interface; not each is the first that a test asks for.
        if (!pluginFactory_ && !EnsureClientLoaded())
            return nullptr;
        Interface* const pointer = pluginInterfaces.*which;
        if (!pointer)
            LogMissing(pointer);
        return pointer;
    }

    static void LogMissing(const ISSOClient*);
    static void LogMissing(const ISSOClientPrivate*);
    static void LogMissing(const ISSOClientModule*);
    static void LogMissing(const ISSOServerManager*);

    void ReadClientConfigFile();
    SearchList ServerAppSearchList();
    void AddRegistryLocation(SearchList& searchList);
    void AddUnversionedRegistryLocation(SearchList& searchList);
    void ExpandSearchList(SearchList& directories);
    SearchResult Search(StartUpFile file, const std::wstring& fileName, SearchList directories) const;

    void LocateVersionCompatibilityFile();
    void UseVersionCompatibilityFileOverride();
    bool SearchVersionCompatibilityFile(const SearchList& directories);
    bool VersionCompatibilityFileExists() const;
    std::optional<VersionCompatibilityEntry> ChooseClientPlugin();
    std::vector<VersionCompatibilityEntry> ReadVersionCompatibilityEntries(const Json::Value& root);

    bool LoadClientPluginModule();
    bool LoadClientPluginModuleInSteps();
    bool GiveUpLoading(const char* reason);
    bool FindClientPluginFile();
    bool LoadVerifiedFile();
    bool VerifySignature(const LockedFile& file) const;
    bool LoadModule(const LockedFile& verified);
    bool GetPluginFactory();
    void ConfigureServer(ISSOServerManager* serverManager);
    void ConnectLogger();
    void PassIdentity(ISSOServerManager* serverManager);
    void ObtainInterfaces();

    void NotifyBegin(LoadStep step) const;
    void NotifyEnd(LoadStep step, bool succeeded, DWORD error = ERROR_SUCCESS) const;

    static std::atomic<SSOPathResolver*> instance_;

    std::vector<std::wstring> extraClientConfigSearchPaths_;
    LogSink logSink_;
    VersionParts sdkVersion_;
    std::wstring versionCompatibilityFileOverride_;
    std::wstring versionCompatibilityFilePath_;
    std::wstring ssoServerAppPath_;
    std::wstring clientConfigFileOverride_;
    std::wstring clientConfigFilePath_;
    std::wstring clientPluginModulePath_;
    ServerSettings serverSettings_;
    ClientConfigLoadState clientConfigLoadState_ = NotLoaded;
    HMODULE pluginModule_ = nullptr;
    ISSOClientFactory* pluginFactory_ = nullptr; ///< Not null if the plugin is loaded.
    PluginLoadState loadState_ = PluginNotAttempted;

    StartUpOverrides overrides_;
    StartUpObserver& observer_;
    /// Logged at every attempt, even after a failed one, so it is built once.
    std::shared_ptr<const std::wstring> moduleLoadedMessage_;
    /// True if the path of the version compatibility file is the bare name that a failed search stores.
    bool versionCompatibilityFileNotFound_ = false;
    /// True during the search for the server application, because a search directory may refer to the result of that
    /// same search.
    bool findingServerApp_ = false;
};

} // namespace Kestrany::IdentityServices

#endif
