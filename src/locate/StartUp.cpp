// The start-up on one page: from the version compatibility file to the plugin's interfaces.
// LoadClientPluginModuleInSteps lists the steps in order.

#include <algorithm>
#include <exception>
#include <map>
#include <optional>

#include "base/Files.h"
#include "base/Message.h"
#include "base/Paths.h"
#include "base/Platform.h"
#include "base/Text.h"
#include "load/LockedFile.h"
#include "load/PluginLoader.h"
#include "load/contract/ISSOClientFactory.h"
#include "load/contract/ISSOServerManager.h"
#include "locate/SSOPathResolver.h"

namespace Kestrany::IdentityServices {
namespace {

constexpr char clientPluginKey[] = "ssoClientPlugin";

template <class... Arguments>
void LogLine(LogLevel level, const wchar_t* text, const Arguments&... arguments)
{
    DefaultLogFunction(Message(text, arguments...), level);
}

void LogLoadFailure(const std::wstring& path, const std::wstring& reason)
{
    LogLine(TALIXLog::Error, L"Failed to load client plugin module %1%. Error: %2%", path, reason);
}

std::wstring NormalizedModulePath(std::wstring path)
{
    std::replace(path.begin(), path.end(), L'\\', L'/');
    return NormalizePath(path);
}

std::wstring DefectMessage(EntryDefect defect, const std::wstring& key, const std::wstring& file)
{
    switch (defect) // not covered: Every defect has its message.
    {
    case EntryDefect::ModuleBlank:
        return Message(L"Blank or missing key 'module' in %1% in version compatibility file %2%. Object ignored.", key,
                       file);
    case EntryDefect::ModulePathBlank:
        return Message(
            L"Blank or missing key 'modulePath' or 'modulePathWoW64' in %1% in version compatibility file %2%. "
            L"Object ignored.",
            key, file);
    case EntryDefect::VersionBlank:
        return Message(L"Blank or missing key 'version' in %1% in version compatibility file %2%. Object ignored.", key,
                       file);
    case EntryDefect::RangeMissing:
        return Message(
            L"Missing object 'compatibleSsoServicesVersion' in version compatibility file %1%. Object ignored.", file);
    case EntryDefect::RangeInvalid:
        return Message(L"Invalid version range in 'compatibleSsoServicesVersion' object in version compatibility file "
                       L"%1%. Object ignored.",
                       file);
    }
    return {}; // not covered: Every defect has its message.
}

} // namespace

bool SSOPathResolver::LoadClientPluginModule()
{
    if (pluginModule_ || pluginFactory_) // not covered: The factory is never set without the module.
        return true; // Also if the module's factory failed: EnsureClientLoaded checks the factory itself.
    if (loadState_ == PluginAttempted)
        return false; // On purpose a failed load is final: only the new manager after the last stop tries again.
    loadState_ = PluginAttempted;

    try
    {
        return LoadClientPluginModuleInSteps();
    }
    catch (const std::exception& error)
    {
        return GiveUpLoading(error.what());
    }
    catch (...)
    {
        return GiveUpLoading("unknown exception");
    }
}

/// Marks the plugin as not loaded, because its configuration is incomplete. Does so before the message, which may fail
/// if the system is out of memory.
bool SSOPathResolver::GiveUpLoading(const char* reason)
{
    pluginFactory_ = nullptr;
    pluginInterfaces = {};
    loadState_ = PluginAttempted;
    const std::wstring text = Widen(reason);
    observer_.OnException(text);
    LogLoadFailure(clientPluginModulePath_, text);
    return false;
}

/// The start-up. The first step also finds the version compatibility file; that needs the server application, which
/// needs the client config file.
bool SSOPathResolver::LoadClientPluginModuleInSteps()
{
    if (!FindClientPluginFile())
        return false;
    if (!LoadVerifiedFile()) // Locks the file, verifies its signature, loads it, compares the mapped file.
        return false;
    if (!GetPluginFactory())
        return false;
    // The server manager receives the server application's location before anything else, and its identity only after
    // the log is connected. ObtainInterfaces gets it from the factory again, on purpose: the contract has both calls.
    NotifyBegin(LoadStep::ConfigureServer);
    ISSOServerManager* serverManager = pluginFactory_->GetSSOServerManager();
    ConfigureServer(serverManager);
    ConnectLogger();
    PassIdentity(serverManager);
    loadState_ = PluginLoaded;
    ObtainInterfaces();
    return true;
}

// Find the plugin module

bool SSOPathResolver::FindClientPluginFile()
{
    const std::wstring& path = clientPluginModulePath_;
    if (path.empty())
        FindCompatibleClientPlugin();
    observer_.OnModulePath(path, FindModulePathDefect(path));
    if (PathExists(path))
        return true;
    NotifyEnd(LoadStep::FindFile, false, ERROR_FILE_NOT_FOUND);
    LogLine(TALIXLog::Error, L"Client plugin module not found: %1%", path);
    return false;
}

bool SSOPathResolver::FindCompatibleClientPlugin()
{
    if (!clientPluginModulePath_.empty())
        return true;
    LocateVersionCompatibilityFile();
    const std::wstring version = Widen(JoinVersion(sdkVersion_));
    const std::wstring& file = versionCompatibilityFilePath_;
    Log(Message(
            L"Searching for compatible client plugin version for Orlindex version %1% in version compatibility file "
            L"%2%",
            version, file),
        TALIXLog::Info);
    if (const std::optional<VersionCompatibilityEntry> chosen = ChooseClientPlugin())
    {
        clientPluginModulePath_ = NormalizedModulePath(chosen->modulePath);
        // On purpose the module's path, not the file's, despite the wording of the message.
        Log(Message(L"Found compatible client plugin for Orlindex version %1% in version compatibility file: %2%",
                    version, clientPluginModulePath_),
            TALIXLog::Info);
        return true;
    }
    Log(Message(VersionCompatibilityFileExists()
                    ? L"Failed to find compatible client plugin version for Orlindex version %1% in version "
                      L"compatibility file %2%"
                    : L"Failed to find compatible client plugin version for Orlindex version %1% since "
                      L"version compatibility file %2% is not found",
                version, file),
        TALIXLog::Error);
    return false;
}

void SSOPathResolver::LocateVersionCompatibilityFile()
{
    if (!versionCompatibilityFilePath_.empty())
        return;
    if (!versionCompatibilityFileOverride_.empty())
    {
        UseVersionCompatibilityFileOverride();
        return;
    }

    // This call searches for the server application, and reads the client config file before.
    std::wstring serverAppDirectory = GetSSOServerAppPath();
    if (serverAppDirectory.empty())
        serverAppDirectory = L"%SSOServerAppPath%"; // Not searched; messages show it as a reference without a value.
    // not covered: Branches of the compiler; the file is found there, and it is not.
    if (SearchVersionCompatibilityFile({{serverAppDirectory, DirectoryOrigin::ServerApplication}}))
        return;
    SearchList directories;
    if (!serverSettings_.versionCompatibilityConfigFilePath.empty())
        directories.push_back({serverSettings_.versionCompatibilityConfigFilePath, DirectoryOrigin::ClientConfig});
    ExpandSearchList(directories);
    if (SearchVersionCompatibilityFile(directories))
        return;
    versionCompatibilityFilePath_ = VersionCompatibilityFileName;
    versionCompatibilityFileNotFound_ = true;
    // On purpose only the directories of the second search: the first search logged its own.
    Log(Message(L"Failed to find version compatibility file %1% in the following paths:\n%2%",
                VersionCompatibilityFileName, DirectoryLines(directories)),
        TALIXLog::Error);
}

void SSOPathResolver::UseVersionCompatibilityFileOverride()
{
    const std::wstring& path = versionCompatibilityFileOverride_;
    if (!PathExists(path))
    {
        Log(Message(L"Failed to find version compatibility file override %1%", path), TALIXLog::Error);
        return;
    }
    Log(Message(L"Found version compatibility file override at %1%", path), TALIXLog::Info);
    versionCompatibilityFilePath_ = path;
}

bool SSOPathResolver::SearchVersionCompatibilityFile(const SearchList& directories)
{
    Log(Message(L"Searching for version compatibility file %1% in the following paths:\n%2%",
                VersionCompatibilityFileName, DirectoryLines(directories)),
        TALIXLog::Info);
    versionCompatibilityFilePath_ =
        Search(StartUpFile::VersionCompatibility, VersionCompatibilityFileName, directories).found;
    if (versionCompatibilityFilePath_.empty())
        return false;
    Log(Message(L"Found version compatibility file at %1%", versionCompatibilityFilePath_), TALIXLog::Info);
    return true;
}

/// After a failed search the path is the bare file name, which counts as missing: it would be resolved against the
/// current directory, which anyone may choose. An override with that name is a normal file.
bool SSOPathResolver::VersionCompatibilityFileExists() const
{
    return !versionCompatibilityFileNotFound_ && PathExists(versionCompatibilityFilePath_);
}

void SSOPathResolver::SetVersionCompatibilityFileOverride(std::wstring path)
{
    versionCompatibilityFileOverride_ = std::move(path);
}

/// Returns the entry with the highest version that serves this library's version; nullopt if there is none.
std::optional<VersionCompatibilityEntry> SSOPathResolver::ChooseClientPlugin()
{
    const std::wstring& file = versionCompatibilityFilePath_;
    const FileContents contents =
        versionCompatibilityFileNotFound_ ? FileContents{ERROR_FILE_NOT_FOUND, {}} : ReadFileContents(file);
    if (!contents.IsRead() && !VersionCompatibilityFileExists())
    {
        Log(Message(L"Version compatibility file %1% not found", file), TALIXLog::Error);
        return std::nullopt;
    }
    const ParsedJson json = contents.IsRead() ? ParseJson(contents.bytes) : ParsedJson();
    observer_.OnJsonFile({StartUpFile::VersionCompatibility, file, contents.error,
                          contents.IsRead() && !json.root ? std::optional(json.error) : std::nullopt});
    if (!json.root)
    {
        Log(Message(L"Failed to load file %1%. Possibly json format is not valid.", file), TALIXLog::Error);
        return std::nullopt;
    }
    const std::vector<VersionCompatibilityEntry> entries = ReadVersionCompatibilityEntries(*json.root);
    if (entries.empty())
    {
        Log(Message(L"Version compatibility list is empty under key %1% in version compatibility file %2%",
                    clientPluginKey, file),
            TALIXLog::Error);
        return std::nullopt;
    }
    const VersionCompatibilityEntry* const chosen = ChooseEntry(entries, sdkVersion_);
    for (const VersionCompatibilityEntry& entry : entries)
        observer_.OnCompatibilityEntry({entry, std::nullopt, &entry == chosen, ExplainMismatch(entry, sdkVersion_)});
    return chosen ? std::optional(*chosen) : std::nullopt;
}

/// Returns the valid entries, and logs a message for each of the others.
std::vector<VersionCompatibilityEntry> SSOPathResolver::ReadVersionCompatibilityEntries(const Json::Value& root)
{
    std::vector<VersionCompatibilityEntry> entries;
    // Each message is built once: a file can have millions of invalid elements.
    std::map<EntryDefect, std::wstring> messages;
    ParseEntries(root, clientPluginKey, IsWow64(), Widen, [&](ParsedEntry&& parsed) {
        ExpandPathVariables(parsed.entry.modulePath);
        if (!parsed.defect)
        {
            entries.push_back(std::move(parsed.entry));
            return;
        }
        std::wstring& message = messages[*parsed.defect];
        if (message.empty())
            message = DefectMessage(*parsed.defect, Widen(clientPluginKey), versionCompatibilityFilePath_);
        Log(message, TALIXLog::Error);
        observer_.OnCompatibilityEntry({parsed.entry, parsed.defect, false, std::nullopt});
    });
    return entries;
}

// Verify and load the module

/// Nobody can write, replace or rename the file between verification and loading: it is locked for that time, and a
/// file that cannot be locked is not loaded. It is verified and loaded by its final path, because links in the
/// configured path could lead to one file for the verification and to another for the load. Messages name the
/// configured path.
bool SSOPathResolver::LoadVerifiedFile()
{
    const LockedFile file(clientPluginModulePath_);
    return VerifySignature(file) && LoadModule(file);
}

bool SSOPathResolver::CheckClientPlugin()
{
    if (!FindClientPluginFile())
        return false;
    const LockedFile file(clientPluginModulePath_);
    return VerifySignature(file) && ReasonNotToLoad(clientPluginModulePath_, file) == ERROR_SUCCESS;
}

bool SSOPathResolver::VerifySignature(const LockedFile& file) const
{
    const std::wstring& path = clientPluginModulePath_;
    const SignatureVerification verification = CheckClientPluginBinary(path, file.Path());
    observer_.OnSignature({path, file.Path(), verification});
    const bool allowed = LoadingAllowed(verification.result);
    if (!allowed)
        LogLine(TALIXLog::Info, L"Not loaded client plugin module %1%", path);
    NotifyEnd(LoadStep::LockFile, file.IsLocked(), file.Error());
    return allowed;
}

bool SSOPathResolver::LoadModule(const LockedFile& verified)
{
    const std::wstring& path = clientPluginModulePath_;
    LogLine(TALIXLog::Info, L"Dynamically loading client plugin module %1%", path);
    NotifyBegin(LoadStep::LoadModule);
    const ModuleLoad load = LoadVerifiedModule(path, verified);
    if (load.ambiguousPath)
        NotifyEnd(LoadStep::CheckPath, false, load.error);
    NotifyEnd(LoadStep::LoadModule, load.module || load.fromAnotherFile, load.fromAnotherFile ? 0 : load.error);
    if (load.fromAnotherFile)
        NotifyEnd(LoadStep::CompareFile, false);
    if (!load.module)
    {
        LogLoadFailure(path, GetSystemErrorText(load.error));
        return false;
    }
    pluginModule_ = load.module;
    LogLine(TALIXLog::Info, L"Successfully loaded client plugin module %1%", path);
    return true;
}

// Configure the plugin

bool SSOPathResolver::GetPluginFactory()
{
    const std::wstring& path = clientPluginModulePath_;
    LogLine(TALIXLog::Info, L"Getting factory proc from client plugin module %1%", path);
    const PluginFactorySymbol symbol = FindPluginFactory(pluginModule_);
    NotifyEnd(LoadStep::FindSymbol, symbol.function != nullptr, symbol.error);
    if (!symbol.function)
    {
        LogLine(TALIXLog::Error, L"Failed to get factory proc from client plugin module %1%. Error: %2%", path,
                GetSystemErrorText(symbol.error));
        return false;
    }
    LogLine(TALIXLog::Info, L"Getting factory from client plugin module %1%", path);
    NotifyBegin(LoadStep::CallFactory);
    pluginFactory_ = symbol.function();
    NotifyEnd(LoadStep::CallFactory, pluginFactory_ != nullptr);
    return pluginFactory_ != nullptr; // Without a message: the plugin's own log has the reason.
}

void SSOPathResolver::ConfigureServer(ISSOServerManager* serverManager)
{
    if (serverManager)
        serverManager->ConfigureServerApp(GetSSOServerAppPath().c_str(), GetSSOServerAppExeFile().c_str());
    NotifyEnd(LoadStep::ConfigureServer, true);
}

void SSOPathResolver::ConnectLogger()
{
    NotifyBegin(LoadStep::ConnectLogger);
    const PluginLog log = ConnectPluginLogger(*pluginFactory_);
    observer_.OnPluginObject(PluginObject::LoggerSource, log.source != nullptr);
    if (log.source)
        observer_.OnPluginObject(PluginObject::Logger, log.logger != nullptr);
    NotifyEnd(LoadStep::ConnectLogger, true);
}

void SSOPathResolver::PassIdentity(ISSOServerManager* serverManager)
{
    NotifyBegin(LoadStep::PassIdentity);
    if (serverManager)
    {
        serverManager->SetProcessIdentityName(serverSettings_.defaultProcessName.c_str());
        serverManager->SetServerIdentityName(serverSettings_.defaultServerName.c_str());
        serverManager->SetSupportBothLocalAndAdmin(serverSettings_.supportBothLocalAndAdmin);
    }
    NotifyEnd(LoadStep::PassIdentity, true);
}

void SSOPathResolver::ObtainInterfaces()
{
    NotifyBegin(LoadStep::ObtainInterfaces);
    ObtainPluginInterfaces(*pluginFactory_);
    observer_.OnPluginObject(PluginObject::ClientModule, pluginInterfaces.ssoClientModule != nullptr);
    observer_.OnPluginObject(PluginObject::ServerManager, pluginInterfaces.ssoServerManager != nullptr);
    observer_.OnPluginObject(PluginObject::Client, pluginInterfaces.ssoClient != nullptr);
    observer_.OnPluginObject(PluginObject::ClientPrivate, pluginInterfaces.ssoClientPrivate != nullptr);
    NotifyEnd(LoadStep::ObtainInterfaces, true);
}

void SSOPathResolver::NotifyBegin(LoadStep step) const
{
    observer_.OnLoadStep({step, LoadState::Begun, ERROR_SUCCESS});
}

void SSOPathResolver::NotifyEnd(LoadStep step, bool succeeded, DWORD error) const
{
    observer_.OnLoadStep({step, succeeded ? LoadState::Done : LoadState::Failed, error});
}

} // namespace Kestrany::IdentityServices
