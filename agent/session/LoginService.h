#ifndef AGENT_SESSION_LOGINSERVICE_H
#define AGENT_SESSION_LOGINSERVICE_H

#include <cstdint>
#include <string>

#include "orlindex/IdServicesConsts.h"
#include "session/Account.h"
#include "session/ResultCodes.h"

namespace Kestrany::Agent {

/// What the detail result of a login says.
enum class LoginDetail : int
{
    LoggedIn = 0,
    AlreadyLoggedIn = 1,
    NotLoggedIn = 2
};

/// Client ID and scope of more bytes fit no token.
inline constexpr std::size_t MaxProductText = 2048;

/// Characters of the longest token that a host can fetch: the library's buffers hold so many and a zero.
inline constexpr std::size_t MaxToken = 4095;

/// On whose behalf a login is asked for: a host's product at one server. Texts are UTF-8.
struct Caller
{
    Server server = TALIX_SERVER_UNAVAILABLE;
    std::string clientId; ///< Empty while the host has set no product.
    std::string scope;
};

/// What holds for a caller. Times in seconds since 1970-01-01 00:00 UTC; 0 when nobody is signed in.
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

/// Something that happened to the login at a server.
struct LoginEvent
{
    IdentityServices::IdServicesConsts::IdServicesEvent kind;
    Server server;
    std::string clientId; ///< The product that it concerns; empty for all.
    IdErrorCode status = IdSuccess;
};

/// The logins that the hosts of one user share.
class LoginService
{
public:
    virtual ~LoginService() = default;

    /// Signs in who the service chooses.
    virtual IdErrorCode Login(const Caller& caller, LoginDetail& detail) = 0;
    /// Signs the named user in. `replace`: also when another one is signed in, whose login then ends.
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
    /// `onlyExpired`: a token that is still good stays.
    virtual IdErrorCode RefreshToken(const Caller& caller, bool onlyExpired) = 0;
    /// An address with a new ticket that opens `target` in the user's session.
    virtual IdErrorCode OpenAddress(const Caller& caller, const std::string& target, std::uint16_t flag,
                                    std::string& address) = 0;
    /// Takes over the login that is kept for the caller's server. `replace`: also when somebody is signed in.
    virtual IdErrorCode Restore(const Caller& caller, bool replace) = 0;
};

} // namespace Kestrany::Agent

#endif
