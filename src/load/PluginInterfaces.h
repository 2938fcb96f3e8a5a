#ifndef ORLINDEX_LOAD_PLUGININTERFACES_H
#define ORLINDEX_LOAD_PLUGININTERFACES_H

namespace Kestrany::IdentityServices {

class ISSOClient;
class ISSOClientFactory;
class ISSOClientModule;
class ISSOClientPrivate;
class ISSOServerManager;

/// What the loaded plugin offers. The objects belong to the plugin; null until obtained.
struct PluginInterfaces
{
    ISSOClientModule* ssoClientModule = nullptr;
    ISSOServerManager* ssoServerManager = nullptr;
    ISSOClient* ssoClient = nullptr;
    ISSOClientPrivate* ssoClientPrivate = nullptr;
};

/// One set a process, guarded by the process lock.
extern PluginInterfaces pluginInterfaces;

/// Asks the factory for each interface that is still missing, in the order of the fields.
void FillPluginInterfaces(ISSOClientFactory& factory);

} // namespace Kestrany::IdentityServices

#endif
