#ifndef SIMULATOR_SESSION_SESSION_H
#define SIMULATOR_SESSION_SESSION_H

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "session/Account.h"
#include "session/EventQueue.h"
#include "session/LoginRecord.h"
#include "session/ProductSettings.h"
#include "session/ResultCodes.h"
#include "session/Token.h"

namespace Kestrany::Simulator {

/// What the detail result of a login says.
enum class LoginDetail : int
{
    LoggedIn = 0,
    AlreadyLoggedIn = 1,
    NotLoggedIn = 2
};

/// The identity service's state for one host: the product it asked for and the login it holds at each server, and which
/// server is in use. What happens is queued as events. Texts are UTF-8. Any thread may call.
///
/// Knows nothing of the plugin contract, of files or of the platform, so that it can live in any process.
class Session
{
public:
    static constexpr std::chrono::hours TokenLifetime{1};
    static constexpr std::chrono::hours LoginLifetime{14 * 24};

    Session(std::vector<Account> accounts, Clock clock, RandomSource random, EventQueue& events);

    IdErrorCode SetProduct(Server server, const ProductSettings& product);
    IdErrorCode GetProduct(Server server, ProductSettings& product) const;

    Server GetServer() const;
    IdErrorCode SetServer(Server server);
    talix_login_mode GetLoginMode() const;
    IdErrorCode SetLoginMode(talix_login_mode mode);

    /// Signs the first account in.
    IdErrorCode Login(LoginDetail& detail);
    /// Signs the named account in. `replace`: also when another one is signed in, whose login then ends.
    IdErrorCode Login(const std::string& userName, const std::string& secret, bool replace);
    IdErrorCode Logout();
    /// The login that `server` holds, to be restored in another process; nothing when there is none.
    std::optional<LoginRecord> GetLogin(Server server) const;
    /// Takes over the login of another process. `replace`: also when somebody is signed in. Queues no event.
    IdErrorCode Restore(Server server, const LoginRecord& record, bool replace);
    /// Says that a login of an earlier start goes on, when there is one.
    void Resume();

    bool IsLoggedIn() const;
    bool IsLoginExpired() const;
    bool IsLoginValid() const;
    bool IsTokenAvailable() const;
    bool IsTokenExpired() const;
    /// Seconds since 1970-01-01 00:00 UTC; 0 when nobody is signed in.
    std::uint32_t LoginExpiry() const;
    /// Seconds since 1970-01-01 00:00 UTC; 0 when nobody is signed in.
    std::uint32_t TokenExpiry() const;

    IdErrorCode GetAccount(Account& account) const;
    /// `renew`: an expired token is replaced instead of refused.
    IdErrorCode GetAccessToken(std::string& token, bool renew);
    IdErrorCode GetIdToken(std::string& token) const;
    /// `onlyExpired`: a token that is still good stays.
    IdErrorCode RefreshToken(bool onlyExpired);
    /// An address with a new ticket that opens `target` in the user's session.
    IdErrorCode OpenAddress(const std::string& target, std::uint16_t flag, std::string& address) const;

    /// What holds now, as a JSON object: "server" by its name, whether it has a "product", the "login" ("none",
    /// "valid", "expired") and the "token" ("none", "valid", "expired"), the "user" that is signed in, and how many
    /// "events" wait.
    std::string StateJson() const;

private:
    struct LoginState
    {
        Account account;
        TimePoint expiry;
        Token accessToken;
        Token idToken;
    };

    /// What one server knows of the host.
    struct Realm
    {
        std::optional<ProductSettings> product;
        std::optional<LoginState> login;
    };

    // All of these are called with the mutex held.
    Realm& Current();
    const Realm& Current() const;
    const LoginState* CurrentLogin() const;
    const Account* FindAccount(const std::string& userId) const;
    bool Passed(TimePoint expiry) const;
    IdErrorCode CheckLogin() const;
    void SignIn(const Account& account);
    void Renew(LoginState& login);
    Token NewToken(const char* kind) const;
    void Happened(IdentityServices::IdServicesConsts::IdServicesEvent kind);

    const std::vector<Account> accounts_;
    const Clock clock_;
    const RandomSource random_;
    EventQueue& events_;

    mutable std::mutex mutex_;
    std::map<Server, Realm> realms_;
    Server server_ = TALIX_SERVER_PRODUCTION;
    talix_login_mode loginMode_ = TALIX_LOGIN_MODE_DEFAULT;
};

} // namespace Kestrany::Simulator

#endif
