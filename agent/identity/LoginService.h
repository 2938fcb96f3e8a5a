#ifndef AGENT_IDENTITY_LOGINSERVICE_H
#define AGENT_IDENTITY_LOGINSERVICE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include <json/value.h>

#include "identity/ResultCodes.h"
#include "orlindex/IdServicesConsts.h"

namespace Kestrany::Agent {

// --- Servers --------------------------------------------------------------------------------------------------------

/// The identity servers that hosts choose from.
inline constexpr Server Servers[] = {TALIX_SERVER_PRODUCTION, TALIX_SERVER_STAGING, TALIX_SERVER_DEVELOPMENT};

/// The server's name in addresses, files, messages and log lines; empty for a value that names no server.
std::string ServerName(Server server);
/// The server of a name, case-sensitive; TALIX_SERVER_UNAVAILABLE for an unknown name.
Server ServerOfName(const std::string& name);

/// Whether `address` names a host over http or https.
bool IsWebAddress(const std::string& address);

// --- Logins ---------------------------------------------------------------------------------------------------------

/// The detail result of a login.
enum class LoginDetail : int
{
    LoggedIn = 0,
    AlreadyLoggedIn = 1,
    NotLoggedIn = 2
};

/// Bytes of client ID and scope together. Longer ones fit no token.
inline constexpr std::size_t MaxProductText = 2048;

/// Characters of the longest token that a host can fetch: the library's buffers hold so many and a zero.
inline constexpr std::size_t MaxToken = 4095;

/// The settings of a proxy server. Texts are UTF-8.
struct ProxySettings
{
    std::string host;
    std::string userName;
    std::string password;
    std::int32_t port = 0;
};

/// How calls back off after failures. Times in seconds.
struct BackoffSettings
{
    int initialInterval = 1;
    int maxInterval = 60;
    int multiplier = 2;
    int maxRetries = 5;
    int jitter = 1;
};

/// On whose behalf the service is called: a host's product at one server. Texts are UTF-8.
struct Caller
{
    Server server = TALIX_SERVER_UNAVAILABLE;
    std::string clientId; ///< Empty while the host has set no product.
    std::string scope;
    // What the host set for a source that uses a network; nullopt for the defaults.
    talix_login_mode loginMode = TALIX_LOGIN_MODE_DEFAULT;
    std::optional<ProxySettings> proxy{};
    std::optional<BackoffSettings> backoff{};
};

/// A user. Texts are UTF-8.
struct Account
{
    std::string userId;
    std::string userName; ///< What the user types to sign in.
    std::string firstName;
    std::string lastName;
    std::string email;
    std::string displayName;
    std::string secret;                     ///< Only the automated login asks for it. Stays in the server process.
    Json::Value profile{Json::objectValue}; ///< Further members of the profile; they never replace those above.
};

/// The account's attributes, without its secret, as a JSON object.
std::string ProfileJson(const Account& account);

/// The state of the login and of the caller's token. Times in seconds since 1970-01-01 00:00 UTC; 0 if nobody is signed
/// in.
struct LoginStatus
{
    bool loggedIn = false;
    bool loginExpired = false;
    bool tokenExpired = true;
    std::uint32_t loginExpiry = 0;
    std::uint32_t tokenExpiry = 0;
    std::string userName;

    bool IsValid() const { return loggedIn && !loginExpired; }
};

/// A change of the login at a server.
struct LoginEvent
{
    IdentityServices::IdServicesConsts::IdServicesEvent kind;
    Server server;
    std::string clientId; ///< The product that it concerns; empty for all.
    IdErrorCode status = IdSuccess;
};

/// The logins that the hosts of one user share. In a host it is reached through the connection to the server process;
/// there a source of identity implements it.
class LoginService
{
public:
    virtual ~LoginService() = default;

    /// Signs in the user that the source chooses.
    virtual IdErrorCode Login(const Caller& caller, LoginDetail& detail) = 0;
    /// Signs the named user in. `replace`: also if another user is signed in, whose login then ends.
    virtual IdErrorCode AutomatedLogin(const Caller& caller, const std::string& userName, const std::string& secret,
                                       bool replace) = 0;
    virtual IdErrorCode Logout(const Caller& caller) = 0;
    /// Ends the logins that wait at the caller's server.
    virtual IdErrorCode CancelLogin(const Caller& caller) = 0;
    virtual IdErrorCode GetStatus(const Caller& caller, LoginStatus& status) = 0;
    virtual IdErrorCode GetAccount(const Caller& caller, Account& account) = 0;
    /// `renew`: an expired token is replaced instead of refused.
    virtual IdErrorCode GetAccessToken(const Caller& caller, bool renew, std::string& token) = 0;
    virtual IdErrorCode GetIdToken(const Caller& caller, std::string& token) = 0;
    /// `onlyExpired`: a token that has not expired stays.
    virtual IdErrorCode RefreshToken(const Caller& caller, bool onlyExpired) = 0;
    /// Returns an address, with a new ticket, that opens `target` in the user's session.
    virtual IdErrorCode OpenAddress(const Caller& caller, const std::string& target, std::uint16_t flag,
                                    std::string& address) = 0;
    /// Restores the stored login of the caller's server. `replace`: also if somebody is signed in.
    virtual IdErrorCode Restore(const Caller& caller, bool replace) = 0;
};

} // namespace Kestrany::Agent

#endif
