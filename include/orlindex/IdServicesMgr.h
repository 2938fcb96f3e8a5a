#ifndef ORLINDEX_IDSERVICESMGR_H
#define ORLINDEX_IDSERVICESMGR_H

#include <cstdint>

#include "IObserver.h"
#include "IdErrorCode.h"
#include "ProductConfig.h"
#include "Types.h"

namespace Kestrany::IdentityServices {

struct IdServicesMgrPrivate;

/// Starts and stops the library, and reaches every identity operation of the client plugin module.
///
/// One object a process, counted: the first Initialize locates, verifies and loads the plugin and creates it, the last
/// Uninitialize destroys it. Pointers to it, and to what GetProductConfigObj answers, dangle from then on.
///
/// Every other member forwards to one operation of the plugin's client interface (ISSOClient, the slot is given with
/// each member) with its arguments in the same order, and answers the plugin's result unchanged. Where the client
/// interface cannot be obtained it answers the fallback that its description names. The plugin runs on the caller's
/// thread with no lock of the library held; whether two threads may be inside the plugin at once is the plugin's rule.
/// An exception of the plugin passes to the caller; where the plugin throws while it is stopped, the library is stopped
/// all the same.
class ORLINDEX_API IdServicesMgr
{
public:
    /// Starts the library, or counts one more user of it.
    ///
    /// Answers IdSuccess; IdClientUnavailable when the plugin could not be located, verified or loaded, with the count
    /// as it was before. A failed start is final for this process: the cause is in the log. While no plugin's logger is
    /// connected, as in a start that fails before it, failures are also written to the wide standard output. A call
    /// that is not the first answers at once, even while another thread is still in the first one. May be called on any
    /// thread, but not from inside a plugin's or observer's operation. Raises std::system_error if the library's mutex
    /// cannot be locked: always inside a stop of the same thread.
    static IdErrorCode Initialize();
    /// Counts one user less, and stops the library with the last one. Always answers IdSuccess, also when nothing was
    /// started. The plugin's code stays in the process. May be called on any thread, but not from inside a plugin's or
    /// observer's operation. Raises std::system_error if the library's mutex cannot be locked: always inside a start or
    /// a stop of the same thread.
    static IdErrorCode Uninitialize();
    /// The one object; null while the library is not initialized, and until the first Initialize has made it: while
    /// that call is under way IsInitialized answers true already. Takes no lock.
    static IdServicesMgr* GetInstance();
    /// Whether Initialize was called more often than Uninitialize, failed calls not counted. True from the beginning of
    /// the first call on, before GetInstance has an object to answer. Takes no lock.
    static bool IsInitialized();

    /// Copies the one pointer to the private state, so that both objects share it. Hosts have no use for it.
    IdServicesMgr& operator=(const IdServicesMgr& other);

    /// Fills `config` with the configuration stored for `server` (slot 1). Without client: IdClientUnavailable, and
    /// `config` keeps its texts.
    IdErrorCode GetProductConfig(Server server, ProductConfig& config) const;
    /// Tells the plugin which product asks (slot 2). The plugin copies `config`. Without client: IdClientUnavailable.
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
    /// Whether an OAuth2 access token is at hand (slot 5). Without client: false.
    bool IsOAuth2TokenAvailable() const;
    /// Writes the OAuth2 access token (slot 6).
    /// @param buffer   receives UTF-16 text with its terminating zero.
    /// @param capacity of `buffer` in UTF-16 units.
    /// @param flag     passed on unchanged: as a rule, whether the plugin may wait for a token that is on its way.
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
    /// Asks for a new access token (slot 13). `flag` is passed on unchanged. Without client: IdClientUnavailable.
    IdErrorCode RefreshOAuth2Token(bool flag);
    /// The identity server in use (slot 14). Without client: 0.
    Server GetServer() const;
    /// Chooses the identity server (slot 15). Without client: IdClientUnavailable.
    IdErrorCode SetServer(Server server);
    /// Signs the user out (slot 16). `result` receives the plugin's detail. Without client: IdClientUnavailable,
    /// `result` untouched.
    IdErrorCode Logout(int& result, talix_logout_flags flags);
    /// Hands an observer to the plugin (slot 17). Returns IdSuccess whatever the plugin returns. Without client:
    /// IdClientUnavailable.
    IdErrorCode AddObserver(IObserver* observer);
    /// Takes an observer back from the plugin (slot 18). Returns IdSuccess whatever the plugin returns. Without client:
    /// IdClientUnavailable.
    IdErrorCode RemoveObserver(IObserver* observer);
    /// Whether the plugin holds settings for a proxy (slot 19). `host` is UTF-8. Without client: IdClientUnavailable.
    IdErrorCode HasProxyInfo(const char* host, unsigned int port);
    /// Fills the caller's record with the settings of a proxy (slot 20). Without client: IdClientUnavailable.
    IdErrorCode GetProxyInfo(const char* host, unsigned int port, talix_proxy_info* info);
    /// Stores the settings of a proxy (slot 21). The plugin copies the record. Without client: IdClientUnavailable.
    IdErrorCode SetProxyInfo(const talix_proxy_info* info);
    /// Forgets all proxy settings (slot 22). Without client: IdClientUnavailable.
    IdErrorCode ClearProxyInfo();
    /// Writes the user's profile as UTF-8 text (slot 23). `size` holds the capacity of `out` in bytes and receives what
    /// the plugin needed or wrote. Without client: IdClientUnavailable.
    IdErrorCode GetProfileInfo(char* out, int* size);
    /// The environment behind the server in use (slot 24). Without client: 0.
    TALIXEnvironment GetEnvironment() const;
    /// Delivers queued events to the observers, on this thread (slot 25). Without client: IdClientUnavailable.
    talix_status_code DispatchEvent();
    /// Whether an event is waiting (slot 26). Without client: false.
    bool HasEvent() const;
    /// Does nothing and answers IdSuccess.
    IdErrorCode Login();
    /// Signs the user in (slot 28). `result` receives the plugin's detail. Without client: IdClientUnavailable,
    /// `result` untouched.
    IdErrorCode Login(int& result);
    /// Names the host's top-level window, which the plugin's dialogs belong to (slot 30). Without client: nothing.
    void SetHostApplicationWindow(std::uint64_t window);
    /// Shows the user's account settings (slot 31). `result` receives the plugin's detail. Without client:
    /// IdClientUnavailable, `result` untouched.
    IdErrorCode ShowAccountSettings(int& result);
    /// Whether the plugin offers an optional feature (slot 34). Without client: false.
    bool IsApiAvailable(ApiFeature feature) const;
    /// Writes the OAuth2 ID token (slot 35). `capacity` of `buffer` in UTF-16 units. Without client:
    /// IdClientUnavailable.
    IdErrorCode GetOAuth2IdToken(wchar_t* buffer, int capacity);
    /// Chooses how logins are carried out (slot 36). Without client: IdClientUnavailable.
    IdErrorCode SetLoginMode(talix_login_mode mode);
    /// Reads how logins are carried out (slot 37). Without client: IdClientUnavailable, `mode` untouched.
    IdErrorCode GetLoginMode(talix_login_mode& mode) const;

    /// Asks all server processes to quit and waits at most `milliseconds` (ISSOServerManager slot 17). Answers whether
    /// all did; false without a server-process interface.
    bool QuitAllSSOServerProcesses(std::int64_t milliseconds) const;
    /// The configuration that the flat interface fills; it lives as long as this object.
    ProductConfig* GetProductConfigObj();

protected:
    IdServicesMgr();
    IdServicesMgr(const IdServicesMgr&) = delete;
    ~IdServicesMgr();

private:
    friend class IdServicesAutomation; // Serves only while there is private state.

    IdServicesMgrPrivate* d;
};

} // namespace Kestrany::IdentityServices

#endif
