#ifndef ORLINDEX_LOAD_PLUGININTERFACES_H
#define ORLINDEX_LOAD_PLUGININTERFACES_H

namespace Kestrany::IdentityServices {

class ISSOClient;
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

/// One set in a process, guarded by the process lock.
inline PluginInterfaces pluginInterfaces;

} // namespace Kestrany::IdentityServices

#endif
