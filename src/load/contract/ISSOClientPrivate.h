#ifndef ORLINDEX_CONTRACT_ISSOCLIENTPRIVATE_H
#define ORLINDEX_CONTRACT_ISSOCLIENTPRIVATE_H

#include <cstdint>
#include <map>
#include <string>

#include "orlindex/IdErrorCode.h"
#include "orlindex/IdServicesConsts.h"
#include "orlindex/ProductConfig.h"
#include "orlindex/RetrySchedule.h"
#include "orlindex/Types.h"

namespace Kestrany::IdentityServices {

/// If the plugin defines what an argument means, the definition of the sign-in agent's plugin is given as an example.
class ISSOClientPrivate
{
public:
    virtual void Reserved0() = 0;
    virtual const wchar_t* ServerToServerName(Server server) = 0;
    virtual Server ServerNameToServer(const wchar_t* name) = 0;
    /// Slot 3. The agent: encrypts with the system's data protection for the user on this machine; returns base64
    /// text.
    virtual const wchar_t* Encrypt(const wchar_t* text) = 0;
    virtual const wchar_t* GetSettingsPath() = 0;
    virtual void Reserved5() = 0;
    virtual void GetActiveOAuth2TokenRefreshRetrySchedule(StdUtil::RetrySchedule& schedule) = 0;
    /// Slot 7. False for a schedule that the plugin does not accept; it then changes nothing.
    virtual bool SetOAuth2TokenRefreshRetrySchedule(const StdUtil::RetrySchedule& schedule) = 0;
    /// Slot 8. Has its own name, because some compilers reorder overloaded virtual functions. The agent: `name` is
    /// the server's identity name, null or empty for the one in use; with `flag` it only returns a file that exists.
    virtual const wchar_t* GetLoginStateCacheFileWithFlag(const wchar_t* name, Server server, bool flag) = 0;
    virtual const wchar_t* GetLoginStateCacheFile(const wchar_t* name, Server server) = 0;
    /// Slot 10. The agent: loads the login of the server in use; with `flag` even if a user is signed in there.
    virtual bool LoadLoginFromCache(bool flag) = 0;
    /// Slot 11. The agent: `flag` says whether the event reports success; its status is then IdSuccess, otherwise
    /// IdFailed.
    virtual void RaiseEvent(IdServicesConsts::IdServicesEvent event, bool flag) = 0;
    virtual const char* ToJsonString(Server server, const ProductConfig* config) = 0;
    /// Slot 13. False for a text that is not in the plugin's format; server and config are then unchanged.
    virtual bool FromJsonString(Server* server, ProductConfig* config, const char* json) = 0;
    virtual bool Equals(const ProductConfig& left, const ProductConfig& right) = 0;
    /// Slot 15. Waits while another process holds the lock. A process may hold it several times.
    virtual void LockLoginStateFile() = 0;
    virtual void UnlockLoginStateFile() = 0;
    /// Slot 17. The agent adds "processId", "identity", "version" and "uptimeMilliseconds" to `answers`, and treats
    /// a server that does not reply within 3 seconds as frozen.
    virtual bool Ping(std::map<std::string, std::string>& answers) = 0;
    virtual void Reserved18() = 0;
    virtual void ClearEventQueue() = 0;
    /// Slot 20. The agent: the server process stops replying and does not quit. If `callback` is not null, it is
    /// called once on this thread, with the request "frozen <process ID>" and a null context. If it writes "thaw" and
    /// returns that length, the process continues. Otherwise it stays frozen until a later call thaws it, or it is
    /// killed.
    virtual bool FreezeSSOServerProcess(FreezeCallback callback) = 0;
    /// Slot 21. Seconds.
    virtual std::int64_t GetKillFrozenServerTimeout() = 0;
    /// Slot 22. Seconds. The agent: from 0 to one week, 0 means never; applies to servers that are found frozen
    /// from then on.
    virtual bool SetKillFrozenServerTimeout(std::int64_t seconds) = 0;
    /// Slot 23. The agent: returns a JSON object.
    virtual const char* GetSessionState() = 0;

protected:
    ~ISSOClientPrivate() = default;
};

} // namespace Kestrany::IdentityServices

#endif
