#ifndef AGENT_SESSION_LOGINS_H
#define AGENT_SESSION_LOGINS_H

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "session/Jwt.h"
#include "session/LoginRecord.h"
#include "session/LoginService.h"
#include "session/Scenario.h"

namespace Kestrany::Agent {

/// Where logins are kept beyond the process.
class LoginStorage
{
public:
    virtual ~LoginStorage() = default;
    /// True once the record, or that there is none, outlives this process.
    virtual bool Save(Server server, const std::optional<LoginRecord>& record) = 0;
    /// Nothing where there is none, or one that is refused.
    virtual std::optional<LoginRecord> Load(Server server) = 0;
    /// The record that was loaded is not taken over.
    virtual void Refuse(Server server, const std::string& reason) = 0;
};

/// What the identity service is made of.
struct LoginParts
{
    Clock clock;
    RandomSource random;
    TokenSigner signer;
    /// Hears of every event, after it was stored and before the operation returns.
    std::function<void(const LoginEvent&)> onEvent;
};

/// The logins themselves, one for each server, with tokens for each product. Every change is stored before it holds, so
/// that nothing is lost that anybody was told. One thread at a time.
///
/// Knows nothing of files, pipes or the platform.
class Logins final : public LoginService
{
public:
    static constexpr std::size_t MaxClients = 32; ///< Products with tokens; the oldest ones give way.

    Logins(const Scenario& scenario, LoginParts parts, LoginStorage& storage);

    IdErrorCode Login(const Caller& caller, LoginDetail& detail) override;
    IdErrorCode AutomatedLogin(const Caller& caller, const std::string& userName, const std::string& secret,
                               bool replace) override;
    IdErrorCode Logout(const Caller& caller) override;
    IdErrorCode CancelLogin(const Caller& caller) override;
    IdErrorCode GetStatus(const Caller& caller, LoginStatus& status) override;
    IdErrorCode GetAccount(const Caller& caller, Account& account) override;
    IdErrorCode GetAccessToken(const Caller& caller, bool renew, std::string& token) override;
    IdErrorCode GetIdToken(const Caller& caller, std::string& token) override;
    IdErrorCode RefreshToken(const Caller& caller, bool onlyExpired) override;
    IdErrorCode OpenAddress(const Caller& caller, const std::string& target, std::uint16_t flag,
                            std::string& address) override;
    IdErrorCode Restore(const Caller& caller, bool replace) override;

    /// Takes over what is kept for all servers: at the start.
    void RestoreAll();
    bool IsValid(Server server) const { return CheckLogin(server) == IdSuccess; }
    /// Grows when logins that wait at the server are to end.
    unsigned int Cancellations(Server server) const;
    void WaitTimedOut(Server server);

private:
    struct Realm
    {
        std::optional<LoginRecord> login;
        unsigned int cancellations = 0;
    };
    using Kind = IdentityServices::IdServicesConsts::IdServicesEvent;

    TimePoint Now() const;
    bool Passed(TimePoint expiry) const { return Now() >= expiry; }
    const LoginRecord* Find(Server server) const;
    const Account* FindAccount(const std::string& userId) const;
    IdErrorCode CheckLogin(Server server) const;
    /// The caller's tokens, made where the login is good and holds none for it yet.
    IdErrorCode TakeTokens(const Caller& caller, ClientTokens& tokens);
    /// Where another login is good, it ends.
    IdErrorCode SignIn(const Caller& caller, const Account& account);
    IdErrorCode Renew(const Caller& caller);
    IdErrorCode AddTokens(LoginRecord& record, const Caller& caller) const;
    IdErrorCode Store(Server server, std::optional<LoginRecord> record);
    IdErrorCode TakeOver(Server server, bool replace);
    void Happened(Kind kind, Server server, const std::string& clientId = {}, IdErrorCode status = IdSuccess) const;

    const Scenario& scenario_;
    const LoginParts parts_;
    LoginStorage& storage_;
    std::map<Server, Realm> realms_;
};

} // namespace Kestrany::Agent

#endif
