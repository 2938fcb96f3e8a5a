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

/// Operations for the family's own tools. Texts have a terminating zero. A text that is answered belongs to the plugin
/// and stays valid until the same thread asks for it again; a null one counts as empty.
///
/// Slots 6, 7 and 17 pass containers of the standard library, which either side may grow or release: plugin and library
/// must be built with the same one, on the same heap. The other slots are the same for every compiler.
///
/// Where a plugin chooses what an argument means, the choice of the simulator is given as an example.
class ISSOClientPrivate
{
public:
    virtual void Reserved0() = 0;
    virtual const wchar_t* ServerToServerName(Server server) = 0;
    virtual Server ServerNameToServer(const wchar_t* name) = 0;
    /// Slot 3. The simulator: the system's data protection for the user on this machine, as base64 text.
    virtual const wchar_t* Encrypt(const wchar_t* text) = 0;
    virtual const wchar_t* GetSettingsPath() = 0;
    virtual void Reserved5() = 0;
    virtual void GetActiveOAuth2TokenRefreshRetrySchedule(StdUtil::RetrySchedule& schedule) = 0;
    /// Slot 7. False for a schedule that the plugin does not take, which changes nothing.
    virtual bool SetOAuth2TokenRefreshRetrySchedule(const StdUtil::RetrySchedule& schedule) = 0;
    /// Slot 8. Has a name of its own: overloaded virtual operations would be reordered by some compilers.
    /// The simulator: `name` is the server's identity name, null or empty for the one in use; with `flag` only a file
    /// that exists is answered.
    virtual const wchar_t* GetLoginStateCacheFileWithFlag(const wchar_t* name, Server server, bool flag) = 0;
    virtual const wchar_t* GetLoginStateCacheFile(const wchar_t* name, Server server) = 0;
    /// Slot 10. The simulator: for the server in use; with `flag` also when somebody is signed in there.
    virtual bool LoadLoginFromCache(bool flag) = 0;
    /// Slot 11. The simulator: `flag` says whether it succeeded; its status is IdSuccess, else IdFailed.
    virtual void RaiseEvent(IdServicesConsts::IdServicesEvent event, bool flag) = 0;
    virtual const char* ToJsonString(Server server, const ProductConfig* config) = 0;
    /// Slot 13. False for a text that is not the plugin's form; server and config are then as they were.
    virtual bool FromJsonString(Server* server, ProductConfig* config, const char* json) = 0;
    virtual bool Equals(const ProductConfig& left, const ProductConfig& right) = 0;
    /// Slot 15. Waits while another process holds the lock. A process may hold it several times.
    virtual void LockLoginStateFile() = 0;
    virtual void UnlockLoginStateFile() = 0;
    /// Slot 17. The simulator adds "processId", "identity", "version" and "uptimeMilliseconds" to `answers`, and counts
    /// a server that does not answer within 3 seconds as frozen.
    virtual bool Ping(std::map<std::string, std::string>& answers) = 0;
    virtual void Reserved18() = 0;
    virtual void ClearEventQueue() = 0;
    /// Slot 20. The simulator: the process stops answering and quitting. `callback`, where it is not null, is then
    /// called once on this thread, with the request "frozen <process ID>" and a null context. Where it writes "thaw"
    /// and answers that length, the process goes on; else it stays frozen until a later call thaws it, or it is killed.
    virtual bool FreezeSSOServerProcess(FreezeCallback callback) = 0;
    /// Slot 21. Seconds.
    virtual std::int64_t GetKillFrozenServerTimeout() = 0;
    /// Slot 22. Seconds. The simulator: 0 to a week, 0 for never; for servers that are found frozen from then on.
    virtual bool SetKillFrozenServerTimeout(std::int64_t seconds) = 0;
    /// Slot 23. The simulator: a JSON object.
    virtual const char* GetSessionState() = 0;

protected:
    ~ISSOClientPrivate() = default;
};

} // namespace Kestrany::IdentityServices

#endif
