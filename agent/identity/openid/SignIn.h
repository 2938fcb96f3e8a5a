#ifndef AGENT_IDENTITY_OPENID_SIGNIN_H
#define AGENT_IDENTITY_OPENID_SIGNIN_H

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "identity/openid/LoginBook.h"
#include "identity/openid/Provider.h"
#include "identity/openid/Services.h"
#include "identity/openid/SignInPages.h"
#include "identity/openid/Workers.h"

namespace Kestrany::Agent::OpenId {

/// What sign-ins need of their process.
struct SignInParts
{
    Ticks ticks;
    RandomSource random;
    std::shared_ptr<Workers> workers;
    std::shared_ptr<Browser> browser;
    std::shared_ptr<LoopbackListeners> listeners;
    std::shared_ptr<Prompts> prompts; ///< Null if the user is to see no window: the address is then in the log.
    Report report;
};

/// One user who is expected to sign in, in the browser of this machine or with another device. Used on the thread that
/// owns the logins, which it never keeps waiting.
class SignIn : public std::enable_shared_from_this<SignIn>
{
public:
    /// Receives the result, once, and not within Begin: a login that is not stored yet, or why there is none.
    using Done = std::function<void(Outcome<ClientLogin> result)>;

    static std::shared_ptr<SignIn> Begin(SignInParts parts, std::shared_ptr<Provider> provider, LoginKey key,
                                         Done done);
    virtual ~SignIn() = default;
    SignIn(const SignIn&) = delete;
    SignIn& operator=(const SignIn&) = delete;

    /// When it ends at the latest, in ticks.
    std::int64_t Limit() const { return limit_; }
    /// Revokes unused tokens in the background. A failure is only logged. To revoke a refresh token also ends its
    /// access tokens; without a refresh token, the access token is revoked.
    void Revoke(const Secret& refreshToken, const Secret& accessToken) const;
    /// Ends it with this code, unless it has ended.
    void End(IdErrorCode code);

    /// Does what is due by now.
    void RunTimers();
    /// When RunTimers has something to do, in ticks.
    virtual std::int64_t NextTimer() const { return limit_; }

protected:
    SignIn(SignInParts parts, std::shared_ptr<Provider> provider, LoginKey key, Done done);

    virtual void Start() = 0;
    /// What a time-out means.
    virtual IdErrorCode TimeOutCode() const { return IdLoginTimedOut; }
    virtual void Poll() {}

    /// Performs `work` on a worker, and hands its result to `then` on this thread. If the sign-in has ended meanwhile,
    /// the result is discarded. Any thread may call.
    template <class Work, class Then>
    void RunThen(Work work, Then then)
    {
        auto self = shared_from_this();
        Keep(parts_.workers->Run([self, work = std::move(work), then = std::move(then)] {
            auto result = std::make_shared<decltype(work())>(work());
            self->parts_.workers->Post([self, result, then] {
                if (self->hasEnded_)
                    self->Discard(*result);
                else
                    then(std::move(*result));
            });
        }));
    }
    void ShowPrompt(PromptText text, PromptActions actions);
    /// The action for a prompt, which calls from any thread: performed on this thread, unless the sign-in has ended.
    std::function<void()> Posted(std::function<void()> action);
    void Accept(Outcome<Grant> grant, const std::string& nonce);
    void Fail(Failure failure);

    const SignInParts parts_;
    const std::shared_ptr<Provider> provider_;
    const LoginKey key_;
    const std::int64_t limit_;
    std::unique_ptr<Prompt> prompt_;

private:
    /// Revokes tokens that came after the end of the sign-in.
    template <class Result>
    void Discard(const Result&) const
    {
    }
    void Discard(const Outcome<Grant>& grant) const;
    void Discard(const TokenOutcome& outcome) const;
    /// Cancels the task when the sign-in ends.
    void Keep(std::shared_ptr<Workers::Task> task);
    void Finish(Outcome<ClientLogin> result);
    /// Releases what the sign-in holds while it waits.
    virtual void Release() {}

    Done done_;
    std::mutex taskMutex_;
    bool hasEnded_ = false; ///< Changes on this thread, with the lock.
    std::shared_ptr<Workers::Task> task_;
};

/// The login that a grant begins or renews: what the grant does not have stays.
void TakeGrant(Grant grant, ClientLogin& login);

} // namespace Kestrany::Agent::OpenId

#endif
