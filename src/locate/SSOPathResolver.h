#ifndef ORLINDEX_LOCATE_SSOPATHRESOLVER_H
#define ORLINDEX_LOCATE_SSOPATHRESOLVER_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>
#include <windows.h>

#include "base/Log.h"
#include "base/ProcessLock.h"
#include "base/Versions.h"
#include "load/HeldFile.h"
#include "load/PluginInterfaces.h"
#include "locate/FileSearch.h"
#include "locate/ServerSettings.h"
#include "locate/StartSurroundings.h"

namespace Kestrany::IdentityServices {

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

/// The one object that knows where everything is, and the way to the loaded plugin.
///
/// Nothing is computed before it is asked for: each resolver answers its stored result, or first asks the resolvers
/// that it depends on, computes and stores. The first request for a plugin interface therefore sets off the whole
/// chain. The resolvers take no lock of their own; they run under the process lock when the chain does.
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
    /// A manager beside that one, which retraces a start in the given surroundings.
    SSOPathResolver(VersionParts sdkVersion, LogSink logSink, StartSurroundings surroundings = {});
    /// Makes the next GetInstance start anew, with nothing resolved and the plugin's interfaces forgotten. The object
    /// itself stays, for threads that still hold it.
    static void Forget();

    /// Each loads the plugin on first use. Null without plugin, or (with a message) where the plugin answered null.
    /// Every forwarded call asks for one: what finds it there is inline.
    ISSOClient* GetSSOClient() { return Obtain(&PluginInterfaces::ssoClient); }
    ISSOClientPrivate* GetSSOClientPrivate() { return Obtain(&PluginInterfaces::ssoClientPrivate); }
    ISSOClientModule* GetSSOClientModule() { return Obtain(&PluginInterfaces::ssoClientModule); }
    ISSOServerManager* GetSSOServerManager() { return Obtain(&PluginInterfaces::ssoServerManager); }
    /// Asks the factory for its client once more where it had none while loading.
    void EnsureClientAfterInitialize();
    /// Loads the plugin, at most once a manager. Never throws.
    bool EnsureClientLoaded();
    /// The steps of a load up to the one that would load the plugin. Answers whether that one would be taken.
    bool CheckClientPlugin();

    void Log(std::wstring message, LogLevel level) const;

    /// Returns whether the file was found; true also for an override that does not exist, and for every call after the
    /// first, even where a bare name stands for a search that failed.
    bool FindClientConfigFile();
    /// Reads the client config file, once. Returns whether this call was the one, whatever came of it: later calls
    /// return false, as the state never becomes Loaded.
    bool LoadClientConfig();
    /// Names the client config file; refused, with a message, once it was read or an attempt made.
    void SetClientConfigFileOverride(std::wstring path);
    void AddClientConfigSearchPath(std::wstring directory);

    bool FindSSOServerApp();
    std::wstring GetSSOServerAppPath();
    std::wstring GetSSOServerAppExeDirPath();
    std::wstring GetSSOServerAppExeFile();

    /// Fills the path of the plugin module that suits this library's version.
    bool FindCompatibleClientPlugin();
    void SetVersionCompatibilityFileOverride(std::wstring path);

    std::wstring ExeDirectory() const;
    std::wstring LibraryDirectory() const;
    bool GetPathVariableValue(const std::wstring& name, std::wstring& value);
    /// Answers how many references the text held.
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

    void LocateVersionCompatibilityFile();
    bool VersionCompatibilityFileExists() const;
    bool SearchVersionCompatibilityFile(SearchList& directories);

    void ExpandSearchList(SearchList& directories);
    bool Search(StartFile file, const std::wstring& fileName, const SearchList& directories, std::wstring& found) const;

    bool LoadClientPluginModule();
    bool LoadClientPluginModuleOnce();
    bool GiveUpLoading(const char* reason);
    bool FindClientPluginFile();
    bool VerifyClientPlugin(const HeldFile& held) const;
    DWORD RefusalOfLoad(const HeldFile& verified) const;
    bool LoadVerifiedPluginLibrary();
    bool LoadPluginLibrary(const HeldFile& verified);
    bool ObtainPluginFactory();
    void ConfigurePlugin();
    void TakePluginInterfaces();

    void TellStep(LoadStep step, LoadState state, DWORD error = ERROR_SUCCESS) const;
    void TellEnd(LoadStep step, DWORD error) const;
    void TellObject(PluginObject object, const void* answer) const;

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

    StartSurroundings surroundings_;
    StartObserver* observer_; ///< Null in a host.
    /// Written at every attempt, also at those that a failed one makes vain: built once.
    std::shared_ptr<const std::wstring> moduleLoadedMessage_;
    /// The path of the version compatibility file is the bare name that a failed search leaves behind.
    bool versionCompatibilityFileNotFound_ = false;
    /// A search for the server application may meet a reference to its own result.
    bool findingServerApp_ = false;
};

} // namespace Kestrany::IdentityServices

#endif
