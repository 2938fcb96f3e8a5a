#ifndef AGENT_PLUGIN_PLUGIN_H
#define AGENT_PLUGIN_PLUGIN_H

#include "load/contract/ISSOClientFactory.h"
#include "platform/LogFile.h"
#include "plugin/Client.h"
#include "plugin/ClientModule.h"
#include "plugin/ClientPrivate.h"
#include "plugin/Logging.h"
#include "plugin/ServerManager.h"

namespace Kestrany::Agent {

/// The module's one object, which owns all others. Implements the contract's factory.
class Plugin final : public IdentityServices::ISSOClientFactory
{
public:
    /// Created on first use and never destroyed: at process exit another thread may still use it.
    static Plugin& Get();

    /// Logs a message of the plugin itself.
    void Log(TALIXLog::LogLevel level, const std::string& message) const;

    void Reserved0() override {}
    IdentityServices::IPluginLoggerSource* GetLoggerSource() override { return &loggers_; }
    IdentityServices::ISSOClientModule* GetSSOClientModule() override { return &module_; }
    IdentityServices::ISSOClient* GetSSOClient() override { return &client_; }
    IdentityServices::ISSOClientPrivate* GetSSOClientPrivate() override { return &private_; }
    IdentityServices::ISSOServerManager* GetSSOServerManager() override { return &serverManager_; }

private:
    Plugin();
    ~Plugin() = default;

    ServerConnection::Parts ConnectionParts();

    const LogFile log_;
    const LogSink sink_;
    PluginLoggerSource loggers_;
    ServerManager serverManager_;
    EventQueue events_;
    ServerConnection connection_;
    RemoteLogins logins_;
    Session session_;
    Client client_;
    ClientModule module_;
    ClientPrivate private_;
};

} // namespace Kestrany::Agent

#endif
