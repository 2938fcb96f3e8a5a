#include "load/PluginInterfaces.h"

#include "load/contract/ISSOClientFactory.h"

namespace Kestrany::IdentityServices {

PluginInterfaces pluginInterfaces;

void FillPluginInterfaces(ISSOClientFactory& factory)
{
    if (!pluginInterfaces.clientModule)
        pluginInterfaces.clientModule = factory.GetSSOClientModule();
    if (!pluginInterfaces.serverManager)
        pluginInterfaces.serverManager = factory.GetSSOServerManager();
    if (!pluginInterfaces.client)
        pluginInterfaces.client = factory.GetSSOClient();
    if (!pluginInterfaces.clientPrivate)
        pluginInterfaces.clientPrivate = factory.GetSSOClientPrivate();
}

} // namespace Kestrany::IdentityServices
