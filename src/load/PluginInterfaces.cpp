#include "load/PluginInterfaces.h"

#include "load/contract/ISSOClientFactory.h"

namespace Kestrany::IdentityServices {

PluginInterfaces pluginInterfaces;

void FillPluginInterfaces(ISSOClientFactory& factory)
{
    if (!pluginInterfaces.ssoClientModule)
        pluginInterfaces.ssoClientModule = factory.GetSSOClientModule();
    if (!pluginInterfaces.ssoServerManager)
        pluginInterfaces.ssoServerManager = factory.GetSSOServerManager();
    if (!pluginInterfaces.ssoClient)
        pluginInterfaces.ssoClient = factory.GetSSOClient();
    if (!pluginInterfaces.ssoClientPrivate)
        pluginInterfaces.ssoClientPrivate = factory.GetSSOClientPrivate();
}

} // namespace Kestrany::IdentityServices
