#include "identity/openid/SignIn.h"

#include <algorithm>
#include <utility>

#include "identity/openid/UserInfo.h"

namespace Kestrany::Agent::OpenId {

namespace {

/// Redirects that are not of this sign-in and have a line of their own in the log: any page can send them.
constexpr unsigned int MaxReportedRedirects = 5;

/// How long the revocation of unused tokens is tried. Milliseconds; nobody waits for it.
constexpr std::int64_t RevocationLimit = 30'000;

/// In the browser of this machine.
class BrowserFlow final : public SignIn
{
public:
    BrowserFlow(SignInParts parts, std::shared_ptr<Provider> provider, LoginKey key, Done done)
        : SignIn(std::move(parts), std::move(provider), std::move(key), std::move(done)),
          pages_(std::make_shared<SignInPages>(parts_.random))
    {
    }

private:
    void Start() override
    {
        const ProviderConfig& config = provider_->Config();
        std::string problem;
        listener_ = parts_.listeners->Listen(
            config.redirectHost, config.redirectPorts,
            [pages = pages_](std::string_view method, std::string_view target) { return pages->Reply(method, target); },
            problem);
        if (!listener_)
        {
            Failure failure{IdNoRedirectPort, "a free port at " + config.redirectHost, problem};
            return RunThen([failure] { return failure; }, [this](Failure result) { Fail(std::move(result)); });
        }
        origin_ = RedirectUri(config.redirectHost, listener_->Port(), "");
        RunThen([provider = provider_, key = key_, redirectUri = origin_ + config.redirectPath,
                 until = limit_] { return provider->BeginSignIn(key.clientId, key.scope, redirectUri, until); },
                [this](Outcome<BrowserSignIn> signIn) { ExpectUser(std::move(signIn)); });
    }

    void ExpectUser(Outcome<BrowserSignIn> signIn)
    {
        if (const Failure* const failure = FailureOf(signIn))
            return Fail(*failure);
        signIn_ = std::make_shared<const BrowserSignIn>(TakeResult(std::move(signIn)));
        pages_->Expect(signIn_, signIn_->Expectation(provider_->Config()),
                       [self = weak_from_this(), this](RedirectResult result) {
                           if (const std::shared_ptr<SignIn> alive = self.lock())
                               Receive(std::move(result));
                       });
        if (!parts_.prompts)
            ReportAddress();
        PromptActions actions;
        actions.cancel = Posted([this] { End(IdLoginCancelled); });
        actions.notShown = Posted([this] { ReportAddress(); });
        actions.openBrowser = Posted([this] { OpenBrowser(); });
        actions.newAddress = [pages = pages_, origin = origin_] { return origin + pages->NewPath(); };
        ShowPrompt({false, provider_->Config().issuer, {}, {}}, std::move(actions));
        OpenBrowser();
    }

    std::string NewAddress() const { return origin_ + pages_->NewPath(); }
    void ReportAddress() const { parts_.report(TALIXLog::Info, "Sign in at " + NewAddress()); }

    void OpenBrowser()
    {
        if (pages_->IsFinished())
            return;
        RunThen([browser = parts_.browser, address = NewAddress()] { return browser->Open(address); },
                [this](bool isOpened) {
                    if (isOpened)
                        return;
                    isBrowserMissing_ = true;
                    parts_.report(TALIXLog::Warning,
                                  LogLine({IdBrowserNotOpened, "a browser", "a refusal by the system"}) +
                                      " This sign-in goes on at " + NewAddress());
                    if (prompt_)
                        prompt_->ShowBrowserProblem();
                });
    }

    /// On the listener's thread.
    void Receive(RedirectResult result)
    {
        if (result.kind == RedirectResult::Kind::Ignored)
            return Posted([this, failure = result.failure] {
                if (++ignored_ <= MaxReportedRedirects)
                    parts_.report(TALIXLog::Warning, LogLine(failure));
            })();
        if (result.kind == RedirectResult::Kind::Failed)
            return Posted([this, failure = result.failure] { Fail(failure); })();
        // Begun on this thread: the user waits.
        auto code = std::make_shared<const Secret>(std::move(result.code));
        RunThen([provider = provider_, signIn = signIn_, code,
                 until = limit_] { return provider->Redeem(*signIn, *code, until); },
                [this](Outcome<Grant> grant) { Accept(std::move(grant), signIn_->secrets.nonce); });
    }

    IdErrorCode TimeOutCode() const override
    {
        return isBrowserMissing_ && !pages_->WasUsed() ? IdBrowserNotOpened : IdLoginTimedOut;
    }

    void Release() override
    {
        pages_->Close();
        listener_.reset();
    }

    const std::shared_ptr<SignInPages> pages_;
    std::unique_ptr<LoopbackListener> listener_;
    std::string origin_; ///< Of the listener's addresses.
    std::shared_ptr<const BrowserSignIn> signIn_;
    unsigned int ignored_ = 0;
    bool isBrowserMissing_ = false;
};

/// With another device.
class DeviceFlow final : public SignIn
{
public:
    DeviceFlow(SignInParts parts, std::shared_ptr<Provider> provider, LoginKey key, Done done)
        : SignIn(std::move(parts), std::move(provider), std::move(key), std::move(done))
    {
    }
    std::int64_t NextTimer() const override
    {
        return polling_ && !isPolling_ ? std::min(polling_->NextPoll(), limit_) : limit_;
    }

private:
    void Start() override
    {
        RunThen([provider = provider_, key = key_,
                 until = limit_] { return provider->BeginDeviceSignIn(key.clientId, key.scope, until); },
                [this](Outcome<DeviceAuthorization> device) { ExpectUser(std::move(device)); });
    }

    void ExpectUser(Outcome<DeviceAuthorization> device)
    {
        if (const Failure* const failure = FailureOf(device))
            return Fail(*failure);
        device_ = std::make_shared<const DeviceAuthorization>(TakeResult(std::move(device)));
        polling_.emplace(device_->interval, device_->lifetime, parts_.ticks());
        if (!parts_.prompts)
            ReportAddress();
        PromptActions actions;
        actions.openBrowser = [] {}; // It is another device's.
        actions.cancel = Posted([this] { End(IdLoginCancelled); });
        actions.notShown = Posted([this] { ReportAddress(); });
        const std::string address = device_->completeUri.empty() ? device_->verificationUri : device_->completeUri;
        actions.newAddress = [address] { return std::string(address); };
        ShowPrompt({true, provider_->Config().issuer, device_->verificationUri, device_->userCode}, std::move(actions));
    }

    void ReportAddress() const
    {
        parts_.report(TALIXLog::Info, "Sign in at " + device_->verificationUri + " with the code " + device_->userCode);
    }

    void Poll() override
    {
        if (!polling_ || isPolling_ || parts_.ticks() < polling_->NextPoll())
            return;
        isPolling_ = true;
        RunThen([provider = provider_, key = key_, device = device_,
                 until = limit_] { return provider->PollDevice(key.clientId, *device, until); },
                [this](TokenOutcome outcome) { TakePoll(std::move(outcome)); });
    }

    void TakePoll(TokenOutcome outcome)
    {
        if (auto* const tokens = std::get_if<TokenReply>(&outcome))
        {
            auto reply = std::make_shared<TokenReply>(std::move(*tokens));
            return RunThen(
                [provider = provider_, key = key_, reply, until = limit_] {
                    return provider->AcceptDeviceTokens(key.clientId, std::move(*reply), until);
                },
                [this](Outcome<Grant> grant) { Accept(std::move(grant), {}); });
        }
        isPolling_ = false;
        if (!polling_)
            return; // Never: it was made before the first poll.
        if (std::optional<Failure> failure =
                polling_->Continue(outcome, "the token endpoint of " + provider_->Config().issuer, parts_.ticks()))
            Fail(*std::move(failure));
    }

    std::shared_ptr<const DeviceAuthorization> device_;
    std::optional<DevicePolling> polling_;
    bool isPolling_ = false; ///< A request is on its way.
};

} // namespace

std::shared_ptr<SignIn> SignIn::Begin(SignInParts parts, std::shared_ptr<Provider> provider, LoginKey key, Done done)
{
    std::shared_ptr<SignIn> signIn;
    if (provider->Config().signIn == SignInMethod::Device)
        signIn = std::make_shared<DeviceFlow>(std::move(parts), std::move(provider), std::move(key), std::move(done));
    else
        signIn = std::make_shared<BrowserFlow>(std::move(parts), std::move(provider), std::move(key), std::move(done));
    signIn->Start();
    return signIn;
}

SignIn::SignIn(SignInParts parts, std::shared_ptr<Provider> provider, LoginKey key, Done done)
    : parts_(std::move(parts)), provider_(std::move(provider)), key_(std::move(key)),
      limit_(parts_.ticks() + std::chrono::milliseconds(provider_->Config().signInLimit).count()),
      done_(std::move(done))
{
}

void SignIn::End(IdErrorCode code)
{
    if (!hasEnded_)
        Fail({code, {}, {}});
}

void SignIn::RunTimers()
{
    if (hasEnded_)
        return;
    if (parts_.ticks() >= limit_)
        return Fail(
            {TimeOutCode(), "a user within " + std::to_string(provider_->Config().signInLimit.count()) + " s", "none"});
    Poll();
}

void SignIn::Keep(std::shared_ptr<Workers::Task> task)
{
    const std::lock_guard lock(taskMutex_);
    if (hasEnded_)
        task->Cancel();
    else
        task_ = std::move(task);
}

void SignIn::ShowPrompt(PromptText text, PromptActions actions)
{
    if (parts_.prompts)
        prompt_ = parts_.prompts->Show(std::move(text), std::move(actions));
}

std::function<void()> SignIn::Posted(std::function<void()> action)
{
    return [self = weak_from_this(), workers = parts_.workers, action = std::move(action)] {
        workers->Post([self, action] {
            const std::shared_ptr<SignIn> alive = self.lock();
            if (alive && !alive->hasEnded_)
                action();
        });
    };
}

void SignIn::Accept(Outcome<Grant> grant, const std::string& nonce)
{
    if (const Failure* const failure = FailureOf(grant))
        return Fail(*failure);
    ClientLogin login;
    login.clientId = key_.clientId;
    login.scope = key_.scope;
    login.nonce = nonce;
    TakeGrant(TakeResult(std::move(grant)), login);
    Finish(std::move(login));
}

void SignIn::Discard(const Outcome<Grant>& grant) const
{
    if (FailureOf(grant) == nullptr)
        Revoke(ResultOf(grant).refreshToken, ResultOf(grant).accessToken);
}

void SignIn::Discard(const TokenOutcome& outcome) const
{
    if (const auto* const tokens = std::get_if<TokenReply>(&outcome))
        Revoke(tokens->refreshToken, tokens->accessToken);
}

void SignIn::Revoke(const Secret& refreshToken, const Secret& accessToken) const
{
    const bool hasRefresh = !refreshToken.IsEmpty();
    auto token = std::make_shared<const Secret>((hasRefresh ? refreshToken : accessToken).Clone());
    parts_.workers->Run([provider = provider_, clientId = key_.clientId, token, report = parts_.report,
                         kind = hasRefresh ? "refresh_token" : "access_token",
                         until = parts_.ticks() + RevocationLimit] {
        if (const std::optional<Failure> failure = provider->Revoke(clientId, *token, kind, until))
            report(TALIXLog::Warning, "A token of a sign-in that failed was not revoked. " + LogLine(*failure));
    });
}

void SignIn::Fail(Failure failure)
{
    Finish(std::move(failure));
}

void SignIn::Finish(Outcome<ClientLogin> result)
{
    const std::shared_ptr<SignIn> self = shared_from_this(); // Its owner may drop it within `done`.
    std::unique_lock lock(taskMutex_);
    hasEnded_ = true;
    const std::shared_ptr<Workers::Task> task = std::exchange(task_, nullptr); // It owns this object, too.
    lock.unlock();
    if (task)
        task->Cancel();
    prompt_.reset();
    Release();
    const Done done = std::exchange(done_, nullptr);
    done(std::move(result));
}

void TakeGrant(Grant grant, ClientLogin& login)
{
    login.accessToken = std::move(grant.accessToken);
    login.accessExpiry = grant.accessExpiry;
    if (!grant.refreshToken.IsEmpty())
        login.refreshToken = std::move(grant.refreshToken);
    if (!grant.claims)
        return;
    login.idToken = std::move(grant.idToken);
    login.idExpiry = TimePoint(std::chrono::seconds(grant.claims->expiry));
    login.subject = grant.claims->subject;
    login.claims = UserClaims(grant.claims->all, Json::Value(Json::objectValue));
    login.hasUserInfo = false;
}

} // namespace Kestrany::Agent::OpenId
