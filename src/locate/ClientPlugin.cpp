// From a path to live interfaces: choose, verify, load, configure.

#include <exception>

#include "base/MessageFormat.h"
#include "base/Paths.h"
#include "base/SystemText.h"
#include "base/TextConversion.h"
#include "load/BinaryTrust.h"
#include "load/FileIdentity.h"
#include "load/HeldFile.h"
#include "load/PluginModule.h"
#include "load/contract/IPluginLogger.h"
#include "load/contract/ISSOClientFactory.h"
#include "load/contract/ISSOServerManager.h"
#include "locate/SSOPathResolver.h"

namespace Kestrany::IdentityServices {
namespace {

constexpr wchar_t loggerName[] = L"Orlindex";

template <class... Arguments>
void LogLine(LogLevel level, const wchar_t* text, const Arguments&... arguments)
{
    DefaultLogFunction(Message(text, arguments...), level);
}

void LogLoadFailure(const std::wstring& path, const std::wstring& reason)
{
    LogLine(TALIXLog::Error, L"Failed to load client plugin module %1%. Error: %2%", path, reason);
}

/// Whether a loaded module is the verified file, or one that an earlier start verified and that serves on: where the
/// file was replaced meanwhile, the platform answers with the module in memory. Not every file system keeps the folders
/// above an open file in place, so what counts is which file was mapped.
bool IsVerifiedFile(HMODULE module, const HeldFile& verified)
{
    return IsVerifiedModule(module) || IsMappedFrom(module, verified);
}

IPluginLogger* ConnectPluginLogger(IPluginLoggerSource& source)
{
    IPluginLogger* logger = source.GetLogger(loggerName);
    if (logger)
        SetPluginLogger([logger](const std::wstring& message, LogLevel level) { logger->Log(message.c_str(), level); });
    else
        SetPluginLogger(nullptr);
    FlushPendingLog();
    return logger;
}

} // namespace

bool SSOPathResolver::LoadClientPluginModule()
{
    if (pluginModule_ || pluginFactory_)
        return true; // Also for a module whose factory failed: EnsureClientLoaded asks for the factory itself.
    if (loadState_ == PluginAttempted)
        return false; // On purpose a failed load is final: only the manager after the last stop tries again.
    loadState_ = PluginAttempted;

    try
    {
        return LoadClientPluginModuleOnce();
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

/// A plugin that was not configured to the end does not count as loaded. That comes before the words, for which there
/// may be no memory.
bool SSOPathResolver::GiveUpLoading(const char* reason)
{
    pluginFactory_ = nullptr;
    pluginInterfaces = {};
    loadState_ = PluginAttempted;
    const std::wstring words = Widen(reason);
    if (observer_)
        observer_->OnException(words);
    LogLoadFailure(clientPluginModulePath_, words);
    return false;
}

bool SSOPathResolver::LoadClientPluginModuleOnce()
{
    if (!FindClientPluginFile() || !LoadVerifiedPluginLibrary() || !ObtainPluginFactory())
        return false;
    ConfigurePlugin();
    loadState_ = PluginLoaded;
    TakePluginInterfaces();
    return true;
}

bool SSOPathResolver::FindClientPluginFile()
{
    const std::wstring& path = clientPluginModulePath_;
    if (path.empty())
        FindCompatibleClientPlugin();
    if (observer_)
        observer_->OnModulePath(path, FindModulePathDefect(path));
    if (PathExists(path))
        return true;
    TellStep(LoadStep::FindFile, LoadState::Failed, ERROR_FILE_NOT_FOUND);
    LogLine(TALIXLog::Error, L"Client plugin module not found: %1%", path);
    return false;
}

/// Messages name the path as it was configured; verified is the file that is held open, by its full path.
bool SSOPathResolver::VerifyClientPlugin(const HeldFile& held) const
{
    const std::wstring& path = clientPluginModulePath_;
    const bool trusted = CheckClientPluginBinary(path, held.Path(), observer_);
    if (!trusted)
        LogLine(TALIXLog::Info, L"Not loaded client plugin module %1%", path);
    TellEnd(LoadStep::HoldFile, held.Error());
    return trusted;
}

/// Why a verified file is not passed to the library loader; ERROR_SUCCESS if it is. The loader would take an ambiguous
/// path for another file than the one verified, and one that is not held may have been replaced since.
DWORD SSOPathResolver::RefusalOfLoad(const HeldFile& verified) const
{
    // A link may have another kind of name than the file that it leads to.
    if (!FindModulePathDefect(clientPluginModulePath_) && !FindModulePathDefect(verified.Path()))
        return verified.Error();
    TellStep(LoadStep::CheckPath, LoadState::Failed, ERROR_BAD_PATHNAME);
    return ERROR_BAD_PATHNAME;
}

/// Between verification and loading nobody can write, replace or rename the file: it is held open for that time, and
/// one that cannot be held is not loaded. It is verified and loaded by its own path: by the one that was configured,
/// links could lead to one file for the verification and to another for the loading.
bool SSOPathResolver::LoadVerifiedPluginLibrary()
{
    const HeldFile held(clientPluginModulePath_);
    return VerifyClientPlugin(held) && LoadPluginLibrary(held);
}

bool SSOPathResolver::CheckClientPlugin()
{
    if (!FindClientPluginFile())
        return false;
    const HeldFile held(clientPluginModulePath_);
    return VerifyClientPlugin(held) && RefusalOfLoad(held) == ERROR_SUCCESS;
}

bool SSOPathResolver::LoadPluginLibrary(const HeldFile& verified)
{
    const std::wstring& path = clientPluginModulePath_;
    LogLine(TALIXLog::Info, L"Dynamically loading client plugin module %1%", path);
    const DWORD refusal = RefusalOfLoad(verified);
    TellStep(LoadStep::LoadModule, LoadState::Begun);
    ModuleLoad load = LoadModuleWithOwnDirectory(verified.Path(), refusal);
    TellStep(LoadStep::LoadModule, load.module ? LoadState::Done : LoadState::Failed, load.error);
    if (load.module && !IsVerifiedFile(load.module, verified))
    {
        TellStep(LoadStep::CompareFile, LoadState::Failed);
        FreeLibrary(load.module);
        load = {nullptr, ERROR_FILE_INVALID}; // The platform gives no error of its own.
    }
    if (!load.module)
    {
        LogLoadFailure(path, GetSystemErrorText(load.error));
        return false;
    }
    RememberVerifiedModule(load.module);
    pluginModule_ = load.module; // Never released: the plugin's code may run as long as the process does.
    LogLine(TALIXLog::Info, L"Successfully loaded client plugin module %1%", path);
    return true;
}

bool SSOPathResolver::ObtainPluginFactory()
{
    LogLine(TALIXLog::Info, L"Getting factory proc from client plugin module %1%", clientPluginModulePath_);
    DWORD error = ERROR_SUCCESS;
    const PluginFactoryFunction getFactory = FindPluginFactory(pluginModule_, error);
    TellEnd(LoadStep::FindSymbol, error);
    if (!getFactory)
    {
        LogLine(TALIXLog::Error, L"Failed to get factory proc from client plugin module %1%. Error: %2%",
                clientPluginModulePath_, GetSystemErrorText(error));
        return false;
    }
    LogLine(TALIXLog::Info, L"Getting factory from client plugin module %1%", clientPluginModulePath_);
    TellStep(LoadStep::CallFactory, LoadState::Begun);
    pluginFactory_ = getFactory();
    TellStep(LoadStep::CallFactory, pluginFactory_ ? LoadState::Done : LoadState::Failed);
    return pluginFactory_ != nullptr; // Without a message: the plugin's own log says why.
}

/// The server manager learns where the server application is before anything else, and who it is only once the log is
/// connected. TakePluginInterfaces asks for it again, on purpose: the contract has both calls.
void SSOPathResolver::ConfigurePlugin()
{
    TellStep(LoadStep::ConfigureServer, LoadState::Begun);
    ISSOServerManager* serverManager = pluginFactory_->GetSSOServerManager();
    if (serverManager)
        serverManager->ConfigureServerApp(GetSSOServerAppPath().c_str(), GetSSOServerAppExeFile().c_str());
    TellStep(LoadStep::ConfigureServer, LoadState::Done);

    TellStep(LoadStep::ConnectLogger, LoadState::Begun);
    IPluginLoggerSource* loggerSource = pluginFactory_->GetLoggerSource();
    TellObject(PluginObject::LoggerSource, loggerSource);
    if (loggerSource)
        TellObject(PluginObject::Logger, ConnectPluginLogger(*loggerSource));
    TellStep(LoadStep::ConnectLogger, LoadState::Done);

    TellStep(LoadStep::PassIdentity, LoadState::Begun);
    if (serverManager)
    {
        serverManager->SetProcessIdentityName(serverSettings_.defaultProcessName.c_str());
        serverManager->SetServerIdentityName(serverSettings_.defaultServerName.c_str());
        serverManager->SetSupportBothLocalAndAdmin(serverSettings_.supportBothLocalAndAdmin);
    }
    TellStep(LoadStep::PassIdentity, LoadState::Done);
}

void SSOPathResolver::TakePluginInterfaces()
{
    TellStep(LoadStep::ObtainInterfaces, LoadState::Begun);
    FillPluginInterfaces(*pluginFactory_);
    TellObject(PluginObject::ClientModule, pluginInterfaces.ssoClientModule);
    TellObject(PluginObject::ServerManager, pluginInterfaces.ssoServerManager);
    TellObject(PluginObject::Client, pluginInterfaces.ssoClient);
    TellObject(PluginObject::ClientPrivate, pluginInterfaces.ssoClientPrivate);
    TellStep(LoadStep::ObtainInterfaces, LoadState::Done);
}

} // namespace Kestrany::IdentityServices
