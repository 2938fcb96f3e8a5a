#ifndef ORLINDEX_SSOCLIENTPRIVATE_H
#define ORLINDEX_SSOCLIENTPRIVATE_H

#include <chrono>
#include <cstdint>
#include <map>
#include <string>

#include "IdErrorCode.h"
#include "IdServicesConsts.h"
#include "ProductConfig.h"
#include "RetrySchedule.h"
#include "Types.h"

namespace Kestrany::IdentityServices {

/// The private interface for Kestrany's own tools: file locations on this machine, and internals of the loaded plugin.
///
/// It has static members only, and no state. Members that forward obtain the plugin interface that their group names.
/// The first use verifies and loads the plugin, with or without IdServicesMgr::Initialize. Without the interface they
/// return the documented fallback and do nothing else. The plugin runs on the caller's thread, without any lock of the
/// library; exceptions of the plugin pass to the caller. Wide texts are UTF-16, narrow ones UTF-8. The members
/// themselves log nothing, except for the override; the searches, the load and the interface look-up that they start do
/// log.
class ORLINDEX_API SSOClientPrivate
{
public:
    // Locations. They do not use the plugin. The first request searches; later ones read the stored result without a
    // lock. Do not call these members from several threads at once until each has returned a path once. Do not call
    // them while another thread loads the plugin, and do not call anything while another thread sets the override. Only
    // GetModuleDirPath and GetLogFile may be called at any time.

    /// Directory of the server application; empty if none is found.
    static std::wstring GetSSOServerAppPath();
    /// The same directory as GetSSOServerAppPath.
    static std::wstring GetSSOServerAppExeDirPath();
    /// Full path of the plugin module that serves this version of the library; empty if there is none. Neither verifies
    /// nor loads it.
    static std::wstring GetSSOClientPluginModule();
    /// Expands references of the form %Name% in place. Returns whether the text has a reference, with or without a
    /// value.
    static bool ExpandPathVariables(std::wstring& text);
    /// Directory of a module that is loaded in this process, by name or path; empty if it is not loaded.
    static std::wstring GetModuleDirPath(const std::wstring& module);
    /// Path of the client config file; the bare file name if none is found.
    static std::wstring GetSSOClientConfigFile();
    /// The override that was set; empty if there is none.
    static std::wstring GetSSOClientConfigFileOverride();
    /// Sets the path of the client config file, which replaces the search. The file need not exist; an empty path
    /// clears the override. A path that was found earlier is discarded. Once the file has been read, or an attempt to
    /// read it was made, the call is refused with a message in the log. The last IdServicesMgr::Uninitialize clears the
    /// override: set it again before a new start.
    static void SetSSOClientConfigFileOverride(std::wstring path);
    /// Full path of the log file, which need not exist.
    static std::wstring GetLogFile();

    // Forwarded to ISSOClientPrivate. Without it they return an empty text or false, or do nothing.

    /// Name of a server (slot 1).
    static std::wstring ServerToServerName(Server server);
    /// Server of a name (slot 2); -1 if there is none, and without the interface.
    static Server ServerNameToServer(std::wstring name);
    /// Encrypts a text for the signed-in user of the machine (slot 3).
    static std::wstring Encrypt(const std::wstring& text);
    /// Directory of the plugin's settings (slot 4).
    static std::wstring GetSettingsPath();
    /// The schedule for retrying a failed token refresh (slot 6). Without the interface: no steps.
    static StdUtil::RetrySchedule GetActiveOAuth2TokenRefreshRetrySchedule();
    /// Replaces that schedule (slot 7).
    static bool SetOAuth2TokenRefreshRetrySchedule(const StdUtil::RetrySchedule& schedule);
    /// Path of the file that stores a login (slot 8). The plugin defines the meaning of name and flag.
    static std::wstring GetLoginStateCacheFile(std::wstring name, Server server, bool flag);
    /// Path of the file that stores a login (slot 9).
    static std::wstring GetLoginStateCacheFile(std::wstring name, Server server);
    /// Restores the stored login (slot 10).
    static bool LoadLoginFromCache(bool flag);
    /// Queues an event as if it had happened (slot 11).
    static void RaiseEvent(IdServicesConsts::IdServicesEvent event, bool flag);
    /// JSON form of a product configuration (slot 12).
    static std::string ToJsonString(Server server, const ProductConfig* config);
    /// Reads a product configuration from that form (slot 13). Returns whether it could.
    static bool FromJsonString(Server* server, ProductConfig* config, const std::string& json);
    /// Whether two product configurations are equal (slot 14).
    static bool Equals(const ProductConfig& left, const ProductConfig& right);
    /// Locks the file that stores a login against other processes (slot 15).
    static void LockLoginStateFile();
    /// Releases that lock (slot 16).
    static void UnlockLoginStateFile();
    /// Pings the server process (slot 17). Returns whether it replies; `answers` receives its reply.
    static bool Ping(std::map<std::string, std::string>& answers);
    /// Pings the server process (slot 17). Returns whether it replies.
    static bool Ping();
    /// Discards all queued events (slot 19).
    static void ClearEventQueue();
    /// Freezes the server process, so that it stops replying (slot 20).
    static bool FreezeSSOServerProcess(FreezeCallback callback);
    /// The time after which a frozen server process is killed (slot 21). Without the interface: 0.
    static std::chrono::seconds GetKillFrozenServerTimeout();
    /// Sets that time (slot 22).
    static bool SetKillFrozenServerTimeout(std::chrono::seconds timeout);
    /// State of the session, in the plugin's own format (slot 23).
    static std::string GetSessionState();

    // Forwarded to ISSOServerManager. Without it they return 0 or false, and leave their outputs unchanged.

    /// Writes the name of the server (slot 7). `capacity` of `buffer` in characters. Returns the length.
    static int GetSSOServerName(char* buffer, int capacity);
    /// Writes the name of the event server (slot 9). See GetSSOServerName.
    static int GetSSOEventServerName(char* buffer, int capacity);
    /// Starts a server process with arguments, and waits at most `timeout` until it is ready (slot 10). `processId`
    /// receives its ID.
    static bool StartSSOServerProcess(const char* const* arguments, int count, std::chrono::milliseconds timeout,
                                      std::int64_t& processId);
    /// Writes the arguments that server processes are started with, each into a caller-owned buffer (slot 12). The
    /// plugin defines how large each buffer must be: the operation receives only their number.
    static bool GetSSOServerProcessArguments(char** buffers, int count);
    /// Sets the arguments that server processes are started with (slot 13).
    static void SetSSOServerProcessArguments(const char* const* arguments, int count);

    // Forwarded to ISSOClientModule. Without it they return an empty text, or do nothing.

    /// Name of the product (slot 4): always 256 characters, which are the name, its terminating zero and the rest of
    /// the buffer; empty if the plugin has no name.
    static std::wstring GetProductName();
    /// Sets the name of the product (slot 5).
    static void SetProductName(const std::wstring& name);

    SSOClientPrivate() = default;                                   ///< There is no state: objects serve no purpose.
    SSOClientPrivate(const SSOClientPrivate&) = default;            ///< There is no state to copy.
    SSOClientPrivate& operator=(const SSOClientPrivate& other);     ///< There is no state: does nothing.
    SSOClientPrivate& operator=(SSOClientPrivate&& other) noexcept; ///< There is no state: does nothing.
};

} // namespace Kestrany::IdentityServices

#endif
