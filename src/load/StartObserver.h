#ifndef ORLINDEX_LOAD_STARTOBSERVER_H
#define ORLINDEX_LOAD_STARTOBSERVER_H

#include <optional>
#include <string>
#include <vector>
#include <windows.h>

#include "base/JsonDocument.h"
#include "base/Paths.h"
#include "load/CompatibilityDocument.h"
#include "load/TrustEvidence.h"

namespace Kestrany::IdentityServices {

/// The files that a start searches for.
enum class StartFile
{
    ClientConfig,
    ServerApplication,
    VersionCompatibility
};

/// Why a directory is searched.
enum class DirectoryOrigin
{
    Library,          ///< The library's own.
    Host,             ///< The host executable's.
    Added,            ///< Added by the host.
    ClientConfig,     ///< Named in the client config file.
    Registry,         ///< Registered by the server application's installer.
    ServerApplication ///< The server application's.
};

enum class DirectoryState
{
    Holds,
    DoesNotHold,
    Empty,        ///< An empty text: not searched.
    EmbeddedZero, ///< Holds a zero character, where the platform would end the path: not searched.
    NoValue,      ///< Begins with a reference that has no value: not searched.
    NotSearched   ///< An earlier one holds the file.
};

struct SearchedDirectory
{
    std::wstring path; ///< After expansion of path variables.
    DirectoryOrigin origin;
    DirectoryState state;
};

struct SearchFinding
{
    StartFile file;
    std::wstring fileName;
    std::vector<SearchedDirectory> directories; ///< In the order of the search.
    std::wstring found;                         ///< Empty where no directory holds it.
};

/// A configuration file, read.
struct DocumentFinding
{
    StartFile file;
    std::wstring path;
    DWORD readError;                     ///< ERROR_SUCCESS where it could be read.
    std::optional<JsonError> parseError; ///< Nothing where it is JSON.
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

/// A key of the registry, and its value "Location" where the key could be opened and the value was asked for.
struct RegistryFinding
{
    std::wstring key;
    LSTATUS opened;
    std::optional<LSTATUS> read;
    std::wstring location;
};

/// An element of the version compatibility file. Of one with a defect, what was read before the defect was met.
struct EntryFinding
{
    VersionCompatibilityEntry entry;
    std::optional<EntryDefect> defect;
    bool chosen;
    std::optional<RangeAnswer> refusal; ///< Why it does not serve this version. Nothing for a chosen or lower one.
};

/// The steps from the module's path to its interfaces.
enum class LoadStep
{
    FindFile,
    VerifySignature,
    HoldFile,
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
    DWORD error; ///< The platform's; ERROR_SUCCESS where the step failed without one.
};

/// What the plugin answers when it is asked.
enum class PluginObject
{
    LoggerSource,
    Logger,
    ClientModule,
    ServerManager,
    Client,
    ClientPrivate
};

/// Is told what each step of a start saw. A host has none.
class StartObserver
{
public:
    virtual void OnSearch(const SearchFinding& /*finding*/) {}
    virtual void OnDocument(const DocumentFinding& /*finding*/) {}
    virtual void OnSetting(const SettingFinding& /*finding*/) {}
    virtual void OnRegistryKey(const RegistryFinding& /*finding*/) {}
    /// The directory that the registry's keys amount to; they were all told before.
    virtual void OnRegistryChoice(const std::wstring& /*key*/, const std::wstring& /*location*/) {}
    virtual void OnCompatibilityEntry(const EntryFinding& /*finding*/) {}
    /// The path of the plugin module, before its file is looked for.
    virtual void OnModulePath(const std::wstring& /*path*/, std::optional<ModulePathDefect> /*defect*/) {}
    virtual void OnSignature(const TrustEvidence& /*evidence*/) {}
    virtual void OnLoadStep(const LoadFinding& /*finding*/) {}
    /// The step that was begun last ended with an exception.
    virtual void OnException(const std::wstring& /*reason*/) {}
    virtual void OnPluginObject(PluginObject /*object*/, bool /*present*/) {}

protected:
    ~StartObserver() = default;
};

} // namespace Kestrany::IdentityServices

#endif
