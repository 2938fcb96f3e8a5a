// From a path to live interfaces: choose, verify, load, configure.

#include <exception>
#include <optional>

#include "base/FileHandle.h"
#include "base/MessageFormat.h"
#include "base/Paths.h"
#include "base/SystemText.h"
#include "load/BinaryTrust.h"
#include "load/FileIdentity.h"
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

void ConnectPluginLogger(ISSOClientFactory& factory)
{
    IPluginLoggerSource* source = factory.GetLoggerSource();
    if (!source)
        return;
    if (IPluginLogger* logger = source->GetLogger(loggerName))
        SetPluginLog([logger](const std::wstring& message, LogLevel level) { logger->Log(message.c_str(), level); });
    else
        SetPluginLog(nullptr);
    FlushPendingLog();
}

} // namespace

bool SSOPathResolver::LoadClientPluginModule()
{
    if (pluginModule_ || clientFactory_)
        return true;
    if (pluginLoadState_ == PluginAttempted)
        return false;
    pluginLoadState_ = PluginAttempted;

    std::wstring reason;
    try
    {
        return LoadClientPluginModuleOnce();
    }
    catch (const std::exception& error)
    {
        reason = Widen(error.what());
    }
    catch (...)
    {
        reason = L"unknown exception";
    }
    // A plugin that was not configured to the end does not count as loaded.
    clientFactory_ = nullptr;
    pluginInterfaces = {};
    pluginLoadState_ = PluginAttempted;
    LogLoadFailure(clientPluginModulePath_, reason);
    return false;
}

bool SSOPathResolver::LoadClientPluginModuleOnce()
{
    if (clientPluginModulePath_.empty())
        FindCompatibleClientPlugin();
    if (!PathExists(clientPluginModulePath_))
    {
        LogLine(TALIXLog::Error, L"Client plugin module not found: %1%", clientPluginModulePath_);
        return false;
    }
    if (!LoadVerifiedPluginLibrary() || !ObtainPluginFactory())
        return false;
    ConfigurePlugin();
    pluginLoadState_ = PluginLoaded;
    FillPluginInterfaces(*clientFactory_);
    return true;
}

/// Between verification and loading nobody can write, replace or rename the file: it is held open for that time, and
/// one that cannot be held is refused. So is a path that the loader would take for another file than the one verified.
bool SSOPathResolver::LoadVerifiedPluginLibrary()
{
    const std::wstring& path = clientPluginModulePath_;
    if (!NamesOneModule(path))
    {
        LogLoadFailure(path, GetSystemErrorText(ERROR_BAD_PATHNAME));
        return false;
    }
    const FileHandle held(path, FILE_SHARE_READ);
    const bool trusted = CheckClientPluginBinary(path);
    if (!trusted)
        LogLine(TALIXLog::Info, L"Not loaded client plugin module %1%", path);
    if (!held.IsOpen())
        LogLine(TALIXLog::Error,
                L"Client plugin module %1% cannot be kept from changing while it is loaded. Error: %2%", path,
                GetSystemErrorText(held.Error()));
    return trusted && held.IsOpen() && LoadPluginLibrary(held);
}

/// A link above the file may lead elsewhere since it was verified: what counts is which file was mapped.
bool SSOPathResolver::LoadPluginLibrary(const FileHandle& verified)
{
    const std::wstring& path = clientPluginModulePath_;
    LogLine(TALIXLog::Info, L"Dynamically loading client plugin module %1%", path);
    DWORD error = ERROR_SUCCESS;
    const HMODULE module = LoadModuleWithOwnDirectory(path, error);
    if (!module)
    {
        LogLoadFailure(path, GetSystemErrorText(error));
        return false;
    }
    const std::optional<FileIdentity> identity = IdentityOf(verified);
    if (!identity || !(identity == IdentityOfMappedFile(module)))
    {
        FreeLibrary(module);
        LogLine(TALIXLog::Error, L"Client plugin module %1% was loaded from another file than the one verified", path);
        return false;
    }
    pluginModule_ = module;
    LogLine(TALIXLog::Info, L"Successfully loaded client plugin module %1%", path);
    return true;
}

bool SSOPathResolver::ObtainPluginFactory()
{
    LogLine(TALIXLog::Info, L"Getting factory proc from client plugin module %1%", clientPluginModulePath_);
    DWORD error = ERROR_SUCCESS;
    const PluginFactoryFunction getFactory = FindPluginFactory(pluginModule_, error);
    if (!getFactory)
    {
        LogLine(TALIXLog::Error, L"Failed to get factory proc from client plugin module %1%. Error: %2%",
                clientPluginModulePath_, GetSystemErrorText(error));
        return false;
    }
    LogLine(TALIXLog::Info, L"Getting factory from client plugin module %1%", clientPluginModulePath_);
    clientFactory_ = getFactory();
    return clientFactory_ != nullptr;
}

/// The server manager learns where the server application is before anything else, and who it is only once the log is
/// connected.
void SSOPathResolver::ConfigurePlugin()
{
    ISSOServerManager* serverManager = clientFactory_->GetSSOServerManager();
    if (serverManager)
        serverManager->ConfigureServerApp(GetSSOServerAppPath().c_str(), GetSSOServerAppExeFile().c_str());
    ConnectPluginLogger(*clientFactory_);
    if (serverManager)
    {
        serverManager->SetProcessIdentityName(serverSettings_.defaultProcessName.c_str());
        serverManager->SetServerIdentityName(serverSettings_.defaultServerName.c_str());
        serverManager->SetSupportBothLocalAndAdmin(serverSettings_.supportBothLocalAndAdmin);
    }
}

} // namespace Kestrany::IdentityServices
