#ifndef AGENT_IDENTITY_OPENID_LOGINS_H
#define AGENT_IDENTITY_OPENID_LOGINS_H

#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "identity/IdentitySource.h"
#include "identity/openid/LoginBook.h"
#include "identity/openid/Refresh.h"
#include "identity/openid/SignIn.h"

namespace Kestrany::Agent::OpenId {

/// What logins need of their process.
struct LoginsParts
{
    SignInParts signIns;
    Clock clock;
    /// The provider that a caller's server has, reached as the caller wants; null if the server has none.
    std::function<std::shared_ptr<Provider>(const Caller& caller)> findProvider;
    /// Why there is no provider at a server.
    std::function<Failure(Server server)> whyNone;
    /// Receives every event, after it was stored.
    std::function<void(const LoginEvent&)> onEvent;
};

/// The logins of one server identity with OpenID Connect providers: one for each server, product and scope. One thread
/// at a time, which never waits for a provider or a user.
class Logins final : public SourceLogins
{
public:
    /// Users who may be expected to sign in at once.
    static constexpr std::size_t MaxSignIns = 8;

    Logins(LoginsParts parts, std::shared_ptr<LoginBook> book);
    ~Logins() override;
    Logins(const Logins&) = delete;
    Logins& operator=(const Logins&) = delete;

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

    bool IsValid(Server server) const override { return book_->HasAny(server); }
    std::unique_ptr<PendingLogin> BeginLogin(const Caller& caller) override;
    std::unique_ptr<PendingWork> Prepare(const std::string& operation, const Caller& caller, bool flag) override;

    /// At the server's start: restores the stored logins, and asks their providers whether they are still valid.
    void RestoreAll();
    void RunTimers();
    std::optional<std::int64_t> NextTimer() const;
    /// Ends the sign-ins that wait.
    void CancelAll();

private:
    struct WaitingSignIn;
    class Waiter;
    struct Work;
    class Waiting;
    struct SignOutPage
    {
        std::shared_ptr<SignInPages> pages;
        std::unique_ptr<LoopbackListener> listener;
        std::int64_t end;
    };
    using Kind = IdentityServices::IdServicesConsts::IdServicesEvent;

    static LoginKey KeyOf(const Caller& caller) { return {caller.server, caller.clientId, caller.scope}; }
    /// Why the caller cannot use a login; IdSuccess if there is one.
    IdErrorCode CheckLogin(const Caller& caller) const;
    IdErrorCode Report(const Failure& failure) const;
    bool IsPast(TimePoint expiry) const { return parts_.clock() >= expiry; }
    std::int64_t Until(const Provider& provider) const;

    void FinishSignIn(const LoginKey& key, Outcome<ClientLogin> result);
    void Leave(const LoginKey& key, const std::shared_ptr<WaitingSignIn>& waiting);

    std::unique_ptr<PendingWork> PrepareAccessToken(const Caller& caller, bool renew);
    std::unique_ptr<PendingWork> PrepareIdToken(const Caller& caller);
    std::unique_ptr<PendingWork> PrepareAccount(const Caller& caller);
    std::unique_ptr<PendingWork> PrepareLogout(const Caller& caller);
    struct RefreshUse
    {
        bool isNeeded;         ///< The operation fails without the refresh; else it goes on with what is kept.
        bool isWholeOperation; ///< The refresh is what the operation is about.
    };
    std::unique_ptr<PendingWork> BeginRefresh(const Caller& caller, RefreshUse use);
    /// Joins the refresh of a login, or begins it. `waiter` gets its result on this thread.
    void JoinRefresh(const Caller& caller, SharedRefresh::Waiter waiter);
    void FinishRefresh(const LoginKey& key, LoginBook::Number number, const std::optional<Failure>& failure);
    void JoinUserInfo(const Caller& caller, SharedRefresh::Waiter waiter);
    void Revoke(const std::shared_ptr<Provider>& provider, std::vector<ClientLogin> logins,
                const std::shared_ptr<Work>& work);
    void FindSignOutPage(const std::shared_ptr<Provider>& provider, const std::string& clientId,
                         std::shared_ptr<const Secret> idToken);
    void ShowSignOutPage(Secret target);
    /// For lines that no host waits for: the log file takes longer than a host's result.
    void ReportLater(std::string line);
    void ReportLate();
    void Notify(Kind kind, Server server, const std::string& clientId = {}, IdErrorCode status = IdSuccess) const;

    const LoginsParts parts_;
    const std::shared_ptr<LoginBook> book_;
    std::map<LoginKey, std::shared_ptr<WaitingSignIn>> signIns_;
    SharedRefresh refreshes_;
    SharedRefresh userInfos_;
    std::list<SignOutPage> signOutPages_;
    std::vector<std::string> lateLines_;
    std::int64_t lateEnd_ = 0; ///< In ticks.
    /// Expires with this object: completions that come later are dropped.
    const std::shared_ptr<Logins*> self_ = std::make_shared<Logins*>(this);
};

} // namespace Kestrany::Agent::OpenId

#endif
