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
    Loaded = 1, ///< Never assigned, on purpose: an attempt counts once, whatever came of it.
    LoadAttempted = 2
};

enum PluginLoadState : std::uint32_t
{
    PluginNotAttempted = 0,
    PluginLoaded = 1,
    PluginAttempted = 2 ///< An attempt has started; it failed if this stays, and is never made again.
};

/// Given values of a start-up, if it is retraced for another host than this process or for one module. Empty texts are
/// worked out, as they always are for a host.
struct StartUpOverrides
{
    std::wstring exeDirectory;
    std::wstring libraryDirectory;
    std::wstring serverAppDirectory;
    std::wstring clientPluginModule;
    StartUpObserver* observer = nullptr; ///< Null: nobody observes.
};

/// The one object that knows where everything is, and the way to the loaded plugin. It decides when something is worked
/// out, logs what was found and notifies the observer; the stages in this folder and in load/ know how.
///
/// Nothing is worked out before it is asked for: each resolver returns its stored result, or first asks the resolvers
/// that it depends on, calls its stage and stores the result. The first request for a plugin interface therefore runs
/// the whole start-up. The resolvers take no lock of their own; they run under the process lock during a start-up.
class SSOPathResolver
{
public:
    /// Creates the manager on first use. It is never destroyed. Every forwarded call asks, so that only the creation
    /// costs a call.
    static SSOPathResolver* GetInstance()
    {
        SSOPathResolver* const manager = instance_.load(std::memory_order_acquire);
        return manager ? manager : Create();
    }
    /// A manager beside that one, which retraces a start-up with the given values.
    SSOPathResolver(VersionParts sdkVersion, LogSink logSink, StartUpOverrides overrides = {});
    /// Makes the next GetInstance begin anew, with nothing resolved and the plugin's interfaces forgotten. The object
    /// itself stays, for threads that still hold it.
    static void Forget();

    /// Each loads the plugin on first use. Null without plugin, or (with a message) if the plugin returned null.
    /// Every forwarded call asks for one: what finds it there is inline.
    ISSOClient* GetSSOClient() { return Obtain(&PluginInterfaces::ssoClient); }
    ISSOClientPrivate* GetSSOClientPrivate() { return Obtain(&PluginInterfaces::ssoClientPrivate); }
    ISSOClientModule* GetSSOClientModule() { return Obtain(&PluginInterfaces::ssoClientModule); }
    ISSOServerManager* GetSSOServerManager() { return Obtain(&PluginInterfaces::ssoServerManager); }
    /// Asks the factory for its client once more if it had none while loading.
    void EnsureClientAfterInitialize();
    /// Loads the plugin, at most once a manager. Never throws.
    bool EnsureClientLoaded();
    /// The steps of a load up to the one that would load the module. Returns whether that one would be taken.
    bool CheckClientPlugin();

    void Log(std::wstring message, LogLevel level) const;

    /// Returns whether the file was found; true also for an override that does not exist, and for every call after the
    /// first, even if a bare name stands for a search that failed.
    bool FindClientConfigFile();
    /// Reads the client config file, once. Returns whether this call was the one, whatever came of it: later calls
    /// return false, as the state never becomes Loaded.
    bool LoadClientConfig();
    /// Names the client config file; refused, with a message, after it was read or an attempt made.
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
    /// Returns how many references the text had.
    std::int32_t ExpandPathVariables(std::wstring& text);
    void ExpandPathVariables(std::vector<std::wstring>& texts);

    const std::wstring& ClientConfigFilePath() const { return clientConfigFilePath_; }
    const std::wstring& ClientConfigFileOverride() const { return clientConfigFileOverride_; }
    const std::wstring& ClientPluginModulePath() const { return clientPluginModulePath_; }
    const std::wstring& VersionCompatibilityFilePath() const { return versionCompatibilityFilePath_; }
    const ServerSettings& Settings() const { return serverSettings_; }

private:
    static SSOPathResolver* Create();

    /// One shape for the four interfaces: load on first use; a plugin that is loaded but does not offer the interface
    /// is worth a message at every request.
    template <class Interface>
    Interface* Obtain(Interface* PluginInterfaces::* which)
    {
        const ProcessLockGuard guard(processLock);
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
    ISSOClientFactory* pluginFactory_ = nullptr; ///< Not null: the plugin is loaded.
    PluginLoadState loadState_ = PluginNotAttempted;

    StartUpOverrides overrides_;
    StartUpObserver& observer_;
    /// Logged at every attempt, also after one that failed: built once.
    std::shared_ptr<const std::wstring> moduleLoadedMessage_;
    /// The path of the version compatibility file is the bare name that a failed search leaves behind.
    bool versionCompatibilityFileNotFound_ = false;
    /// A search for the server application may meet a path variable that stands for its own result.
    bool findingServerApp_ = false;
};

} // namespace Kestrany::IdentityServices

#endif
