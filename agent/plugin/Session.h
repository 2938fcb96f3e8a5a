#ifndef AGENT_PLUGIN_SESSION_H
#define AGENT_PLUGIN_SESSION_H

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "identity/LoginService.h"
#include "plugin/EventQueue.h"
#include "plugin/ProductSettings.h"

namespace Kestrany::Agent {

/// One host's view of the logins: its products, one for each server, the server in use, and the events that concern
/// both. Texts are UTF-8. Any thread may call.
///
/// Holds no lock while it calls the service, which may take long.
class Session
{
public:
    Session(LoginService& logins, EventQueue& events);

    IdErrorCode SetProduct(Server server, const ProductSettings& product);
    IdErrorCode GetProduct(Server server, ProductSettings& product) const;

    Server GetServer() const;
    IdErrorCode SetServer(Server server);
    talix_login_mode GetLoginMode() const;
    IdErrorCode SetLoginMode(talix_login_mode mode);
    /// The proxy and the back-off of requests to a provider; nullopt for the defaults.
    void SetProxy(std::optional<ProxySettings> proxy);
    void SetBackoff(const BackoffSettings& backoff);

    /// Queues an event that concerns the server in use and the product there.
    void Receive(const LoginEvent& event);

    IdErrorCode Login(LoginDetail& detail);
    IdErrorCode Login(const std::string& userName, const std::string& secret, bool replace);
    IdErrorCode Logout();
    /// Ends logins that wait at the server in use.
    IdErrorCode CancelLogin();
    /// Restores the stored login. `replace`: also if somebody is signed in.
    IdErrorCode Restore(bool replace);

    bool IsLoggedIn() const;
    /// IdNotLoggedIn if nobody is signed in; another code if the service cannot be called.
    IdErrorCode CheckLoggedIn() const;
    bool IsLoginExpired() const;
    bool IsLoginValid() const;
    bool IsTokenAvailable() const;
    bool IsTokenExpired() const;
    /// Seconds since 1970-01-01 00:00 UTC; 0 if nobody is signed in.
    std::uint32_t LoginExpiry() const;
    /// Seconds since 1970-01-01 00:00 UTC; 0 if nobody is signed in.
    std::uint32_t TokenExpiry() const;

    IdErrorCode GetAccount(Account& account) const;
    /// `renew`: an expired token is replaced instead of refused.
    IdErrorCode GetAccessToken(std::string& token, bool renew);
    IdErrorCode GetIdToken(std::string& token) const;
    /// `onlyExpired`: a token that has not expired stays.
    IdErrorCode RefreshToken(bool onlyExpired);
    /// Returns an address, with a new ticket, that opens `target` in the user's session.
    IdErrorCode OpenAddress(const std::string& target, std::uint16_t flag, std::string& address) const;

    /// The present state as a JSON object: "server" by its name, whether it has a "product", the "login" ("none",
    /// "valid", "expired") and the "token" ("none", "valid", "expired"), the "user" that is signed in, and how many
    /// "events" wait.
    std::string StateJson() const;

private:
    Caller CurrentCaller() const;
    LoginStatus Status() const;

    LoginService& logins_;
    EventQueue& events_;

    mutable std::mutex mutex_;
    std::map<Server, std::optional<ProductSettings>> products_;
    Server server_ = TALIX_SERVER_PRODUCTION;
    talix_login_mode loginMode_ = TALIX_LOGIN_MODE_DEFAULT;
    std::optional<ProxySettings> proxy_;
    std::optional<BackoffSettings> backoff_;
};

} // namespace Kestrany::Agent

#endif
