#ifndef AGENT_IDENTITY_SIMULATED_LOGINS_H
#define AGENT_IDENTITY_SIMULATED_LOGINS_H

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "identity/IdentitySource.h"
#include "identity/simulated/LoginRecord.h"
#include "identity/simulated/Scenario.h"
#include "identity/simulated/Token.h"

namespace Kestrany::Agent::Simulated {

/// Where logins are kept beyond the process.
class LoginStorage
{
public:
    virtual ~LoginStorage() = default;
    /// True once the record, or that there is none, outlives this process.
    virtual bool Save(Server server, const std::optional<LoginRecord>& record) = 0;
    /// nullopt if there is no record, or one that is refused.
    virtual std::optional<LoginRecord> Load(Server server) = 0;
    /// Reports that a loaded record is not restored.
    virtual void Refuse(Server server, const std::string& reason) = 0;
};

/// What logins need of their process.
struct LoginParts
{
    Clock clock;
    /// Milliseconds that only grow.
    std::function<std::int64_t()> ticks;
    RandomSource random;
    TokenSigner signer;
    /// Receives every event, after it was stored and before the operation returns.
    std::function<void(const LoginEvent&)> onEvent;
};

/// The logins of simulated users, one for each server, with tokens for each product. Every change is stored before it
/// takes effect, so that nothing is lost that was reported to a host. One thread at a time.
///
/// Uses no files, pipes or platform calls.
class Logins final : public SourceLogins
{
public:
    static constexpr std::size_t MaxClients = 32; ///< Products with tokens; the oldest ones are dropped.

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

    bool IsValid(Server server) const override { return CheckLogin(server) == IdSuccess; }
    std::unique_ptr<PendingLogin> BeginLogin(const Caller& caller) override;

    /// Restores the stored logins of all servers, at start-up.
    void RestoreAll();

private:
    class WaitingLogin;
    struct Realm
    {
        std::optional<LoginRecord> login;
        unsigned int cancellations = 0; ///< A waiting login ends if it grows.
    };
    using Kind = IdentityServices::IdServicesConsts::IdServicesEvent;

    TimePoint Now() const;
    bool IsPast(TimePoint expiry) const { return Now() >= expiry; }
    const LoginRecord* Find(Server server) const;
    const Account* FindAccount(const std::string& userId) const;
    IdErrorCode CheckLogin(Server server) const;
    /// The caller's tokens. They are issued if the login is valid and holds none for the caller yet.
    IdErrorCode TakeTokens(const Caller& caller, ClientTokens& tokens);
    /// Ends another login that is valid.
    IdErrorCode SignIn(const Caller& caller, const Account& account);
    IdErrorCode Renew(const Caller& caller);
    IdErrorCode AddTokens(LoginRecord& record, const Caller& caller) const;
    IdErrorCode Store(Server server, std::optional<LoginRecord> record);
    IdErrorCode RestoreStored(Server server, bool replace);
    void Notify(Kind kind, Server server, const std::string& clientId = {}, IdErrorCode status = IdSuccess) const;

    const Scenario& scenario_;
    const LoginParts parts_;
    LoginStorage& storage_;
    std::map<Server, Realm> realms_;
};

} // namespace Kestrany::Agent::Simulated

#endif
