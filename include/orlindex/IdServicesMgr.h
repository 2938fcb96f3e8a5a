#ifndef ORLINDEX_IDSERVICESMGR_H
#define ORLINDEX_IDSERVICESMGR_H

#include <cstdint>

#include "IObserver.h"
#include "IdErrorCode.h"
#include "ProductConfig.h"
#include "Types.h"

namespace Kestrany::IdentityServices {

struct IdServicesMgrPrivate;

/// Starts and stops the library, and gives access to every identity operation of the client plugin module.
///
/// There is one object per process. The first Initialize locates, verifies and loads the plugin and creates the object;
/// the last Uninitialize destroys it. Pointers to it, and to the result of GetProductConfigObj, dangle from then on.
///
/// Every other member forwards its arguments, in the same order, to one operation of the plugin's client interface
/// (ISSOClient; each member names the slot), and returns the plugin's result unchanged. "Without client" names the
/// fallback that a member returns if the client interface cannot be obtained. The plugin runs on the caller's thread,
/// without any lock of the library; the plugin decides whether two threads may call it at once. Exceptions of the
/// plugin pass to the caller. If the plugin throws during the stop, the library still stops.
class ORLINDEX_API IdServicesMgr
{
public:
    /// Starts the library, or increments the start count if it is already started.
    ///
    /// Returns IdSuccess; IdClientUnavailable if the plugin could not be located, verified or loaded, with the start
    /// count unchanged. A failed start is final for this process; the log has the cause. As long as no plugin logger is
    /// connected, which includes every start that fails before that step, failures are also written to the wide
    /// standard output. A call that is not the first returns at once, even while another thread is still in the first
    /// one. May be called on any thread, but not from inside an operation of the plugin or of an observer. Throws
    /// std::system_error if the library's mutex cannot be locked: always inside a stop on the same thread.
    static IdErrorCode Initialize();
    /// Decrements the start count, and stops the library when the count reaches 0. Always returns IdSuccess, even if
    /// the library was not started. The plugin's code stays in the process. May be called on any thread, but not from
    /// inside an operation of the plugin or of an observer. Throws std::system_error if the library's mutex cannot be
    /// locked: always inside a start or a stop on the same thread.
    static IdErrorCode Uninitialize();
    /// The one object. Null while the library is not initialized, and until the first Initialize has created it: during
    /// that call, IsInitialized already returns true. Takes no lock.
    static IdServicesMgr* GetInstance();
    /// Whether Initialize was called more often than Uninitialize; failed calls do not count. Already true at the
    /// beginning of the first call, before GetInstance returns an object. Takes no lock.
    static bool IsInitialized();

    /// Copies the pointer to the private state, so that both objects share it. Hosts have no use for it.
    IdServicesMgr& operator=(const IdServicesMgr& other);

    /// Fills `config` with the configuration stored for `server` (slot 1). Without client: IdClientUnavailable, and
    /// `config` is unchanged.
    IdErrorCode GetProductConfig(Server server, ProductConfig& config) const;
    /// Passes the product configuration to the plugin (slot 2). The plugin copies `config`. Without client:
    /// IdClientUnavailable.
    IdErrorCode SetProductConfig(Server server, const ProductConfig& config);
    /// Fills the caller's record with the attributes of the signed-in user (slot 3). Without client: IdFailed.
    IdErrorCode GetUserInfo(talix_user_info* info);
    /// Writes an address that opens `uri` in the user's session (slot 4).
    /// @param uri      UTF-16 text with a terminating zero.
    /// @param flag     passed on unchanged.
    /// @param buffer   receives UTF-16 text with its terminating zero.
    /// @param capacity of `buffer` in UTF-16 units.
    /// Without client: IdFailed.
    IdErrorCode GetSessionUri(const wchar_t* uri, std::uint16_t flag, wchar_t* buffer, int capacity);
    /// Whether an OAuth2 access token is available (slot 5). Without client: false.
    bool IsOAuth2TokenAvailable() const;
    /// Writes the OAuth2 access token (slot 6).
    /// @param buffer   receives UTF-16 text with its terminating zero.
    /// @param capacity of `buffer` in UTF-16 units.
    /// @param flag     passed on unchanged; usually, whether the plugin may wait for a token that is being obtained.
    /// Without client: IdClientUnavailable.
    IdErrorCode GetOAuth2AccessToken(wchar_t* buffer, int capacity, bool flag);
    /// Whether a user is signed in (slot 7). Without client: false.
    bool IsLoggedIn() const;
    /// When the access token expires, in seconds since 1970-01-01 00:00 UTC (slot 8). Without client: 0.
    std::uint32_t GetOAuth2AccessTokenExpiryDate() const;
    /// Whether the access token has expired (slot 9). Without client: true.
    bool IsOAuth2TokenExpired() const;
    /// When the login expires, in seconds since 1970-01-01 00:00 UTC (slot 10). Without client: 0.
    std::uint32_t GetLoginExpiryDate() const;
    /// Whether the login has expired (slot 11). Without client: false.
    bool IsLoginExpired() const;
    /// Whether the login is valid (slot 12). Without client: false.
    bool IsLoginValid() const;
    /// Requests a new access token (slot 13). `flag` is passed on unchanged. Without client: IdClientUnavailable.
    IdErrorCode RefreshOAuth2Token(bool flag);
    /// The identity server in use (slot 14). Without client: 0.
    Server GetServer() const;
    /// Sets the identity server (slot 15). Without client: IdClientUnavailable.
    IdErrorCode SetServer(Server server);
    /// Signs the user out (slot 16). `result` receives the plugin's detail code. Without client: IdClientUnavailable,
    /// `result` unchanged.
    IdErrorCode Logout(int& result, talix_logout_flags flags);
    /// Adds an observer to the plugin (slot 17). Returns IdSuccess whatever the plugin returns. Without client:
    /// IdClientUnavailable.
    IdErrorCode AddObserver(IObserver* observer);
    /// Removes an observer from the plugin (slot 18). Returns IdSuccess whatever the plugin returns. Without client:
    /// IdClientUnavailable.
    IdErrorCode RemoveObserver(IObserver* observer);
    /// Checks whether the plugin has settings for a proxy (slot 19). `host` is UTF-8. Without client:
    /// IdClientUnavailable.
    IdErrorCode HasProxyInfo(const char* host, unsigned int port);
    /// Fills the caller's record with the settings of a proxy (slot 20). Without client: IdClientUnavailable.
    IdErrorCode GetProxyInfo(const char* host, unsigned int port, talix_proxy_info* info);
    /// Stores the settings of a proxy (slot 21). The plugin copies the record. Without client: IdClientUnavailable.
    IdErrorCode SetProxyInfo(const talix_proxy_info* info);
    /// Deletes all proxy settings (slot 22). Without client: IdClientUnavailable.
    IdErrorCode ClearProxyInfo();
    /// Writes the user's profile as UTF-8 text (slot 23). `size` holds the capacity of `out` in bytes and receives the
    /// number of bytes that the plugin needed or wrote. Without client: IdClientUnavailable.
    IdErrorCode GetProfileInfo(char* out, int* size);
    /// The environment behind the server in use (slot 24). Without client: 0.
    TALIXEnvironment GetEnvironment() const;
    /// Delivers queued events to the observers, on this thread (slot 25). Without client: IdClientUnavailable.
    talix_status_code DispatchEvent();
    /// Whether an event is queued (slot 26). Without client: false.
    bool HasEvent() const;
    /// Does nothing and returns IdSuccess. Login(int&) signs in.
    IdErrorCode Login();
    /// Signs the user in (slot 28). `result` receives the plugin's detail code. Without client: IdClientUnavailable,
    /// `result` unchanged.
    IdErrorCode Login(int& result);
    /// Sets the host's top-level window, which owns the plugin's dialogs (slot 30). Without client: does nothing.
    void SetHostApplicationWindow(std::uint64_t window);
    /// Shows the user's account settings (slot 31). `result` receives the plugin's detail code. Without client:
    /// IdClientUnavailable, `result` unchanged.
    IdErrorCode ShowAccountSettings(int& result);
    /// Whether the plugin supports an optional feature (slot 34). Without client: false.
    bool IsApiAvailable(ApiFeature feature) const;
    /// Writes the OAuth2 ID token (slot 35). `capacity` of `buffer` in UTF-16 units. Without client:
    /// IdClientUnavailable.
    IdErrorCode GetOAuth2IdToken(wchar_t* buffer, int capacity);
    /// Sets the login mode (slot 36). Without client: IdClientUnavailable.
    IdErrorCode SetLoginMode(talix_login_mode mode);
    /// Reads the login mode (slot 37). Without client: IdClientUnavailable, `mode` unchanged.
    IdErrorCode GetLoginMode(talix_login_mode& mode) const;

    /// Asks all server processes to quit, and waits at most `milliseconds` (ISSOServerManager slot 17). Returns whether
    /// all did; false without a server-process interface.
    bool QuitAllSSOServerProcesses(std::int64_t milliseconds) const;
    /// The configuration that the flat interface fills. It lives as long as this object.
    ProductConfig* GetProductConfigObj();

protected:
    IdServicesMgr();
    IdServicesMgr(const IdServicesMgr&) = delete;
    ~IdServicesMgr();

private:
    friend class IdServicesAutomation; // Checks that there is private state.

    IdServicesMgrPrivate* d;
};

} // namespace Kestrany::IdentityServices

#endif
