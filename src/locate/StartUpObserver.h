#ifndef ORLINDEX_LOCATE_STARTUPOBSERVER_H
#define ORLINDEX_LOCATE_STARTUPOBSERVER_H

#include <optional>
#include <string>
#include <windows.h>

#include "base/Json.h"
#include "base/Paths.h"
#include "load/VersionCompatibility.h"
#include "load/signature/SignatureVerification.h"
#include "locate/FileSearch.h"
#include "locate/Registry.h"

namespace Kestrany::IdentityServices {

/// The files that a start-up searches for.
enum class StartUpFile
{
    ClientConfig,
    ServerApplication,
    VersionCompatibility
};

/// A configuration file that was read.
struct JsonFileFinding
{
    StartUpFile file;
    std::wstring path;
    DWORD readError;                     ///< ERROR_SUCCESS if it was read.
    std::optional<JsonError> parseError; ///< nullopt if the file is valid JSON, or was not read.
};

enum class SettingState
{
    Set,
    Missing,
    WrongType ///< Counts as missing.
};

/// A value of the client config file.
struct SettingFinding
{
    std::string key;
    SettingState state;
    std::wstring value;
};

/// An element of the version compatibility file.
struct EntryFinding
{
    VersionCompatibilityEntry entry;   ///< If it has a defect: the values that were read before the defect.
    std::optional<EntryDefect> defect; ///< Why the element is ignored.
    bool chosen;
    std::optional<RangeMatch> mismatch; ///< Why it does not serve this version; nullopt if it does, or has a defect.
};

/// The verification of the plugin module.
struct SignatureFinding
{
    std::wstring path; ///< As configured.
    std::wstring file; ///< The file that was verified.
    SignatureVerification verification;
};

/// The steps from the module's path to its interfaces.
enum class LoadStep
{
    FindFile,
    VerifySignature,
    LockFile,
    CheckPath,
    LoadModule,
    CompareFile,
    FindSymbol,
    CallFactory,
    ConfigureServer,
    ConnectLogger,
    PassIdentity,
    ObtainInterfaces
};

enum class LoadState
{
    Begun,
    Done,
    Failed
};

struct LoadFinding
{
    LoadStep step;
    LoadState state;
    DWORD error; ///< The platform's error; ERROR_SUCCESS if the step failed without one.
};

/// Objects that the library requests from the plugin.
enum class PluginObject
{
    LoggerSource,
    Logger,
    ClientModule,
    ServerManager,
    Client,
    ClientPrivate
};

/// The diagnostic tool's view of a start-up: the manager notifies it of the result of each step. A host has no
/// observer.
class StartUpObserver
{
public:
    virtual void OnSearch(StartUpFile /*file*/, const SearchResult& /*result*/) {}
    virtual void OnJsonFile(const JsonFileFinding& /*finding*/) {}
    virtual void OnSetting(const SettingFinding& /*finding*/) {}
    virtual void OnRegistryKey(const RegistryKeyFinding& /*finding*/) {}
    /// The directory that is chosen from the registry; the observer was already notified of each key.
    virtual void OnRegistryChoice(const std::wstring& /*key*/, const std::wstring& /*location*/) {}
    virtual void OnCompatibilityEntry(const EntryFinding& /*finding*/) {}
    /// The path of the plugin module, before the file is looked for.
    virtual void OnModulePath(const std::wstring& /*path*/, std::optional<ModulePathDefect> /*defect*/) {}
    virtual void OnSignature(const SignatureFinding& /*finding*/) {}
    virtual void OnLoadStep(const LoadFinding& /*finding*/) {}
    /// The step that began last threw an exception.
    virtual void OnException(const std::wstring& /*reason*/) {}
    virtual void OnPluginObject(PluginObject /*object*/, bool /*present*/) {}

protected:
    ~StartUpObserver() = default;
};

} // namespace Kestrany::IdentityServices

#endif
