#ifndef AGENT_PLUGIN_CLIENT_H
#define AGENT_PLUGIN_CLIENT_H

#include "connection/RemoteLogins.h"
#include "load/contract/ISSOClient.h"
#include "plugin/CallPolicy.h"
#include "plugin/EventQueue.h"
#include "plugin/Observers.h"
#include "plugin/ProxyStore.h"
#include "plugin/ServerConnection.h"
#include "plugin/Session.h"

namespace Kestrany::Agent {

/// The public operations: converts arguments, calls the session, and writes its results.
class Client final : public IdentityServices::ISSOClient
{
public:
    Client(Session& session, EventQueue& events, RemoteLogins& logins, ServerConnection& connection, LogSink log);

    /// Starts the client: connects to the server process, which reports who is signed in.
    void Begin();
    /// Ends the client: disconnects from the server process, removes all observers and discards pending events.
    void End();

    void Reserved0() override {}
    IdErrorCode GetProductConfig(Server server, IdentityServices::ProductConfig& config) override;
    IdErrorCode SetProductConfig(Server server, const IdentityServices::ProductConfig& config) override;
    IdErrorCode GetUserInfo(talix_user_info* info) override;
    IdErrorCode GetSessionUri(const wchar_t* uri, std::uint16_t flag, wchar_t* buffer, int capacity) override;
    bool IsOAuth2TokenAvailable() override;
    IdErrorCode GetOAuth2AccessToken(wchar_t* buffer, int capacity, bool wait) override;
    bool IsLoggedIn() override;
    std::uint32_t GetOAuth2AccessTokenExpiryDate() override;
    bool IsOAuth2TokenExpired() override;
    std::uint32_t GetLoginExpiryDate() override;
    bool IsLoginExpired() override;
    bool IsLoginValid() override;
    /// `flag`: only an expired token is replaced.
    IdErrorCode RefreshOAuth2Token(bool flag) override;
    Server GetServer() override;
    IdErrorCode SetServer(Server server) override;
    /// `result`: 0 if the user is signed out, 1 if an observer refused.
    IdErrorCode Logout(int& result, talix_logout_flags flags) override;
    IdErrorCode AddObserver(IdentityServices::IObserver* observer) override;
    IdErrorCode RemoveObserver(IdentityServices::IObserver* observer) override;
    /// With a null or empty host: whether there are settings for any proxy.
    IdErrorCode HasProxyInfo(const char* host, unsigned int port) override;
    /// With a null or empty host: the settings that were stored last.
    IdErrorCode GetProxyInfo(const char* host, unsigned int port, talix_proxy_info* info) override;
    IdErrorCode SetProxyInfo(const talix_proxy_info* info) override;
    IdErrorCode ClearProxyInfo() override;
    /// `size` receives the bytes that the profile needs with its terminating zero, also if `out` is smaller.
    IdErrorCode GetProfileInfo(char* out, int* size) override;
    TALIXEnvironment GetEnvironment() override;
    talix_status_code DispatchEvent() override;
    bool HasEvent() override;
    /// `flag`: also if another user is signed in. `context` is the purpose of the login for the log; it may be null.
    IdErrorCode AutomatedLogin(const wchar_t* user, const wchar_t* secret, bool flag, const wchar_t* context) override;
    /// `result`: a LoginDetail.
    IdErrorCode Login(int& result) override;
    void Reserved29() override {}
    /// No window is shown that would need an owner.
    void SetHostApplicationWindow(std::uint64_t) override {}
    /// Shows no window. `result` is 0: nothing was changed.
    IdErrorCode ShowAccountSettings(int& result) override;
    IdErrorCode OverrideCallConfig(int interval, int failInterval, int minJitter, int maxJitter,
                                   const char* url) override;
    IdErrorCode OverrideBackoffConfig(int initialInterval, int maxInterval, int multiplier, int maxRetries,
                                      int jitter) override;
    bool IsApiAvailable(IdentityServices::ApiFeature feature) override;
    IdErrorCode GetOAuth2IdToken(wchar_t* buffer, int capacity) override;
    IdErrorCode SetLoginMode(talix_login_mode mode) override;
    IdErrorCode GetLoginMode(talix_login_mode& mode) override;

private:
    /// Logs the result of an operation that changes something, and returns it.
    IdErrorCode Done(const char* operation, IdErrorCode code) const;
    /// IdFeatureNotOffered if the source does not offer the feature; another code if the server process cannot be
    /// asked.
    IdErrorCode CheckOffered(IdentityServices::ApiFeature feature) const;

    const LogSink log_;
    Session& session_;
    EventQueue& events_;
    RemoteLogins& logins_;
    ServerConnection& connection_;
    Observers observers_;
    ProxyStore proxies_;
    CallPolicy calls_;
};

} // namespace Kestrany::Agent

#endif
