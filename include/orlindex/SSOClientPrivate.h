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

/// The private surface for the family's own tools: where things lie on the machine, and internals of the loaded plugin.
///
/// Static members only, no state. Members that forward obtain the plugin interface that their group names, which loads
/// and verifies the plugin on first use, with or without IdServicesMgr::Initialize; without the interface they answer
/// what is given, and do nothing else. The plugin runs on the caller's thread with no lock of the library held; its
/// exceptions pass to the caller. Wide texts are UTF-16, narrow ones UTF-8. The members themselves log nothing, but for
/// the override; the searches, the load and the look-up of an interface that they set off do.
class ORLINDEX_API SSOClientPrivate
{
public:
    // Locations. Answered without the plugin. They search on the first request, keep what they found and read it
    // without a lock: do not race them with one another until each has answered a path once, nor with any call that
    // loads the plugin, nor anything with the call that sets the override. GetModuleDirPath and GetLogFile may be
    // called at any time.

    /// Directory of the server application; empty where none is found.
    static std::wstring GetSSOServerAppPath();
    /// The same directory, under its other name.
    static std::wstring GetSSOServerAppExeDirPath();
    /// Full path of the plugin module that suits this library; empty where none does. Neither verifies nor loads it.
    static std::wstring GetSSOClientPluginModule();
    /// Expands references of the form %Name% in place. Answers whether there was one, with a value or without.
    static bool ExpandPathVariables(std::wstring& text);
    /// Directory of a module that is loaded in this process, by name or path; empty where there is none.
    static std::wstring GetModuleDirPath(const std::wstring& module);
    /// Path of the client config file; the bare file name where none is found.
    static std::wstring GetSSOClientConfigFile();
    /// The override that was set; empty for none.
    static std::wstring GetSSOClientConfigFileOverride();
    /// Names the client config file, instead of searching for it. The file need not exist; an empty path clears the
    /// override. A path that was found before is forgotten. Refused, with a message in the log, once the file was read
    /// or an attempt to read it was made. Set it again before a new start: the last IdServicesMgr::Uninitialize forgets
    /// it.
    static void SetSSOClientConfigFileOverride(std::wstring path);
    /// Full path of the log file, whether or not it exists.
    static std::wstring GetLogFile();

    // Forwarded to ISSOClientPrivate. Without it: an empty text, false, or nothing happens.

    /// Name of a server (slot 1).
    static std::wstring ServerToServerName(Server server);
    /// Server of a name (slot 2); -1 for none, and without the interface.
    static Server ServerNameToServer(std::wstring name);
    /// Encrypts a text for the signed-in user of the machine (slot 3).
    static std::wstring Encrypt(const std::wstring& text);
    /// Directory of the plugin's settings (slot 4).
    static std::wstring GetSettingsPath();
    /// The schedule after which a token refresh that failed is tried again (slot 6). Without the interface: no steps.
    static StdUtil::RetrySchedule GetActiveOAuth2TokenRefreshRetrySchedule();
    /// Replaces that schedule (slot 7).
    static bool SetOAuth2TokenRefreshRetrySchedule(const StdUtil::RetrySchedule& schedule);
    /// Path of the file that keeps a login (slot 8). The plugin gives name and flag their meaning.
    static std::wstring GetLoginStateCacheFile(std::wstring name, Server server, bool flag);
    /// Path of the file that keeps a login (slot 9).
    static std::wstring GetLoginStateCacheFile(std::wstring name, Server server);
    /// Restores the login that is kept (slot 10).
    static bool LoadLoginFromCache(bool flag);
    /// Queues an event as if it had happened (slot 11).
    static void RaiseEvent(IdServicesConsts::IdServicesEvent event, bool flag);
    /// JSON form of a product configuration (slot 12).
    static std::string ToJsonString(Server server, const ProductConfig* config);
    /// Reads that form back (slot 13).
    static bool FromJsonString(Server* server, ProductConfig* config, const std::string& json);
    /// Whether two product configurations say the same (slot 14).
    static bool Equals(const ProductConfig& left, const ProductConfig& right);
    /// Takes the lock of the file that keeps a login, against other processes (slot 15).
    static void LockLoginStateFile();
    /// Gives that lock back (slot 16).
    static void UnlockLoginStateFile();
    /// Asks whether the server process answers, and what (slot 17).
    static bool Ping(std::map<std::string, std::string>& answers);
    /// Asks whether the server process answers (slot 17).
    static bool Ping();
    /// Drops all events that wait (slot 19).
    static void ClearEventQueue();
    /// Keeps the server process from answering (slot 20).
    static bool FreezeSSOServerProcess(FreezeCallback callback);
    /// After what time a frozen server process is killed (slot 21). Without the interface: 0.
    static std::chrono::seconds GetKillFrozenServerTimeout();
    /// Sets that time (slot 22).
    static bool SetKillFrozenServerTimeout(std::chrono::seconds timeout);
    /// State of the session, as the plugin words it (slot 23).
    static std::string GetSessionState();

    // Forwarded to ISSOServerManager. Without it: 0 or false, and no output is touched.

    /// Writes the name of the server (slot 7). `capacity` of `buffer` in characters. Answers the length.
    static int GetSSOServerName(char* buffer, int capacity);
    /// Writes the name of the event server (slot 9). See GetSSOServerName.
    static int GetSSOEventServerName(char* buffer, int capacity);
    /// Starts a server process with arguments and waits at most `timeout` until it is ready (slot 10).
    static bool StartSSOServerProcess(const char* const* arguments, int count, std::chrono::milliseconds timeout,
                                      std::int64_t& processId);
    /// Writes the arguments that server processes are started with, each into a buffer of the caller's (slot 12). The
    /// client plugin module says how large each buffer must be, for the operation is told only how many there are.
    static bool GetSSOServerProcessArguments(char** buffers, int count);
    /// Sets the arguments that server processes are started with (slot 13).
    static void SetSSOServerProcessArguments(const char* const* arguments, int count);

    // Forwarded to ISSOClientModule. Without it: an empty text, or nothing happens.

    /// Name of the product (slot 4): always 256 characters, the name followed by its terminating zero and the rest of
    /// the buffer; empty where the plugin has no name.
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
