#ifndef AGENT_PLUGIN_CLIENTPRIVATE_H
#define AGENT_PLUGIN_CLIENTPRIVATE_H

#include "load/contract/ISSOClientPrivate.h"
#include "platform/FileLock.h"
#include "plugin/CallPolicy.h"
#include "plugin/EventQueue.h"
#include "plugin/ServerManager.h"
#include "plugin/Session.h"
#include "server/FrozenServers.h"

namespace Kestrany::Agent {

/// The operations for tools. The contract describes this plugin's choices where it leaves a choice to the plugin.
class ClientPrivate final : public IdentityServices::ISSOClientPrivate
{
public:
    ClientPrivate(Session& session, EventQueue& events, const ServerManager& servers, LogSink log);

    void Reserved0() override {}
    const wchar_t* ServerToServerName(Server server) override;
    Server ServerNameToServer(const wchar_t* name) override;
    const wchar_t* Encrypt(const wchar_t* text) override;
    const wchar_t* GetSettingsPath() override;
    void Reserved5() override {}
    void GetActiveOAuth2TokenRefreshRetrySchedule(StdUtil::RetrySchedule& schedule) override;
    bool SetOAuth2TokenRefreshRetrySchedule(const StdUtil::RetrySchedule& schedule) override;
    const wchar_t* GetLoginStateCacheFileWithFlag(const wchar_t* name, Server server, bool flag) override;
    const wchar_t* GetLoginStateCacheFile(const wchar_t* name, Server server) override;
    bool LoadLoginFromCache(bool flag) override;
    void RaiseEvent(IdentityServices::IdServicesConsts::IdServicesEvent event, bool flag) override;
    const char* ToJsonString(Server server, const IdentityServices::ProductConfig* config) override;
    bool FromJsonString(Server* server, IdentityServices::ProductConfig* config, const char* json) override;
    bool Equals(const IdentityServices::ProductConfig& left, const IdentityServices::ProductConfig& right) override;
    void LockLoginStateFile() override;
    void UnlockLoginStateFile() override;
    bool Ping(std::map<std::string, std::string>& answers) override;
    void Reserved18() override {}
    void ClearEventQueue() override;
    bool FreezeSSOServerProcess(IdentityServices::FreezeCallback callback) override;
    std::int64_t GetKillFrozenServerTimeout() override;
    bool SetKillFrozenServerTimeout(std::int64_t seconds) override;
    const char* GetSessionState() override;

private:
    std::wstring CacheFile(const wchar_t* name, Server server) const;

    Session& session_;
    EventQueue& events_;
    const ServerManager& servers_;
    const LogSink log_;
    FileLock loginLock_;
    RetryPolicy retries_;
    FrozenServers frozen_;
};

} // namespace Kestrany::Agent

#endif
