#ifndef ORLINDEX_CONTRACT_ISSOCLIENTFACTORY_H
#define ORLINDEX_CONTRACT_ISSOCLIENTFACTORY_H

namespace Kestrany::IdentityServices {

class IPluginLoggerSource;
class ISSOClient;
class ISSOClientModule;
class ISSOClientPrivate;
class ISSOServerManager;

/// Root of the plugin contract: the exported function `ISSOClientFactory* GetSSOClientFactory()` returns it. Objects
/// belong to the plugin and stay valid while it is loaded in the process; each operation may return null.
class ISSOClientFactory
{
public:
    virtual void Reserved0() = 0;
    virtual IPluginLoggerSource* GetLoggerSource() = 0;
    virtual ISSOClientModule* GetSSOClientModule() = 0;
    virtual ISSOClient* GetSSOClient() = 0;
    virtual ISSOClientPrivate* GetSSOClientPrivate() = 0;
    virtual ISSOServerManager* GetSSOServerManager() = 0;

protected:
    ~ISSOClientFactory() = default;
};

} // namespace Kestrany::IdentityServices

#endif
