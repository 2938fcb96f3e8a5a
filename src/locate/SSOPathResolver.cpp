#include "locate/SSOPathResolver.h"

#include <utility>

#include "base/MessageFormat.h"
#include "base/ProductIdentity.h"
#include "base/TextConversion.h"
#include "load/contract/ISSOClientFactory.h"
#include "locate/PlatformFolders.h"

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

/// What is said at every request for an interface that a loaded plugin lacks.
struct MissingInterface
{
    SharedText client;
    SharedText clientPrivate;
    SharedText clientModule;
    SharedText serverManager;
};

/// Made before the first load, so that no request needs memory for them. Never destroyed: other threads may ask while
/// the process ends.
const MissingInterface& MissingInterfaceMessages()
{
    static const MissingInterface& messages = *new MissingInterface{
        Shared(L"Failed to obtain ISSOClient. ISSOClientFactory::GetSSOClient returned null."),
        Shared(L"Failed to obtain ISSOClientPrivate. ISSOClientFactory::GetSSOClientPrivate returned null."),
        Shared(L"Failed to obtain ISSOClientModule. ISSOClientFactory::GetSSOClientModule returned null."),
        Shared(L"Failed to obtain ISSOServerManager. ISSOClientFactory::GetSSOServerManager returned null.")};
    return messages;
}

} // namespace

std::atomic<SSOPathResolver*> SSOPathResolver::instance_ = nullptr;

SSOPathResolver::SSOPathResolver(VersionParts sdkVersion, LogSink logSink, StartSurroundings surroundings)
    : logSink_(std::move(logSink)), sdkVersion_(std::move(sdkVersion)),
      ssoServerAppPath_(surroundings.serverAppDirectory), clientPluginModulePath_(surroundings.clientPluginModule),
      surroundings_(std::move(surroundings)), observer_(surroundings_.observer)
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
    if (SSOPathResolver* manager = instance_.load(std::memory_order_relaxed))
    {
        manager->pluginModule_ = nullptr; // Not released: the plugin stays in the process.
        manager->pluginFactory_ = nullptr;
        manager->loadState_ = PluginNotAttempted;
    }
    instance_.store(nullptr, std::memory_order_release);
    pluginInterfaces = {};
}

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

void SSOPathResolver::EnsureClientAfterInitialize()
{
    const ProcessLockGuard guard(processLock);
    if (!pluginInterfaces.ssoClient && pluginFactory_)
        pluginInterfaces.ssoClient = pluginFactory_->GetSSOClient();
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
    catch (...)
    {
        return false; // Only the memory for a message can be missing here: the load has a barrier of its own.
    }
}

void SSOPathResolver::Log(std::wstring message, LogLevel level) const
{
    if (logSink_)
        logSink_(std::move(message), level);
}

void SSOPathResolver::AddClientConfigSearchPath(std::wstring directory)
{
    extraClientConfigSearchPaths_.push_back(std::move(directory));
}

} // namespace Kestrany::IdentityServices
