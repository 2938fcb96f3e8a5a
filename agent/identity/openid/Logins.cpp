#include "identity/openid/Logins.h"

#include <algorithm>
#include <utility>

#include "identity/openid/UserInfo.h"

namespace Kestrany::Agent::OpenId {

namespace Events = IdentityServices::IdServicesConsts;

namespace {

/// How long a call waits for a provider, retries included. A single request may be allowed to take longer.
constexpr std::chrono::milliseconds CallLimit = std::chrono::seconds(30);
/// A host's call ends this much later at the latest, with the code of a provider that cannot be reached. Milliseconds.
constexpr std::int64_t Grace = 5'000;

/// How long a line for the log waits until hosts have read their results. Milliseconds.
constexpr std::int64_t LogDelay = 20;

/// How long the provider's logout page can be opened.
constexpr std::int64_t SignOutPageLimit = 120'000;

/// A login does not expire by itself, but when the provider says so: the largest time that every host can represent.
constexpr std::uint32_t NoExpiry = 0x7FFFFFFF;

std::uint32_t ToSeconds(TimePoint time)
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time.time_since_epoch()).count();
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(seconds, 0, NoExpiry));
}

Failure TooLong(const char* what, const Secret& token)
{
    return {IdTextTooLong, std::string(what) + " of at most " + std::to_string(MaxToken) + " characters",
            std::to_string(token.Size())};
}

/// Names a login where texts are keys. No name of a server or part of a scope holds a line break.
std::string TextOf(const LoginKey& key)
{
    return ServerName(key.server) + '\n' + key.scope + '\n' + key.clientId;
}

} // namespace

/// A sign-in and the hosts that wait for it.
struct Logins::WaitingSignIn
{
    std::shared_ptr<SignIn> signIn;
    std::optional<LoginResult> result;
    unsigned int waiters = 0;
};

/// One host's wait for a sign-in, which several hosts of a product share.
class Logins::Waiter final : public PendingLogin
{
public:
    Waiter(Logins& logins, LoginKey key, std::shared_ptr<WaitingSignIn> waiting)
        : logins_(logins), key_(std::move(key)), waiting_(std::move(waiting))
    {
        ++waiting_->waiters;
    }
    ~Waiter() override
    {
        if (--waiting_->waiters == 0 && !waiting_->result)
            logins_.Leave(key_, waiting_);
    }
    Waiter(const Waiter&) = delete;
    Waiter& operator=(const Waiter&) = delete;

    std::optional<LoginResult> Poll() override { return waiting_->result; }
    std::int64_t Limit() const override { return waiting_->signIn->Limit(); }

private:
    Logins& logins_;
    const LoginKey key_;
    const std::shared_ptr<WaitingSignIn> waiting_;
};

/// The result of work that waits for a provider.
struct Logins::Work
{
    bool isWholeOperation = false;
    IdErrorCode lateCode = IdProviderUnreachable; ///< If the work does not end within its limit.
    std::optional<IdErrorCode> code{};
};

class Logins::Waiting final : public PendingWork
{
public:
    Waiting(std::shared_ptr<Work> work, Ticks ticks, std::int64_t limit)
        : work_(std::move(work)), ticks_(std::move(ticks)), limit_(limit)
    {
    }
    std::optional<IdErrorCode> Poll() override
    {
        return !work_->code && ticks_() >= limit_ ? work_->lateCode : work_->code;
    }
    std::int64_t Limit() const override { return limit_; }
    bool IsWholeOperation() const override { return work_->isWholeOperation; }

private:
    const std::shared_ptr<Work> work_;
    const Ticks ticks_;
    const std::int64_t limit_;
};

Logins::Logins(LoginsParts parts, std::shared_ptr<LoginBook> book) : parts_(std::move(parts)), book_(std::move(book)) {}

Logins::~Logins()
{
    CancelAll();
    ReportLate();
}

// --- Sign-in --------------------------------------------------------------------------------------------------------

IdErrorCode Logins::Login(const Caller& caller, LoginDetail& detail)
{
    detail = LoginDetail::NotLoggedIn;
    if (!parts_.findProvider(caller))
        return Report(parts_.whyNone(caller.server));
    if (caller.clientId.empty())
        return IdNoProductConfig;
    if (caller.clientId.size() + caller.scope.size() > MaxProductText)
        return IdTextTooLong;
    if (CheckLogin(caller) == IdSuccess)
    {
        detail = LoginDetail::AlreadyLoggedIn;
        return IdSuccess;
    }
    if (caller.loginMode != TALIX_LOGIN_MODE_DEFAULT && caller.loginMode != TALIX_LOGIN_MODE_BROWSER)
        return Report({IdLoginModeNotOffered, "the default login mode, or the browser's", "another one"});
    return Report({IdFailed, "at most " + std::to_string(MaxSignIns) + " users who sign in", "another one"});
}

std::unique_ptr<PendingLogin> Logins::BeginLogin(const Caller& caller)
{
    const LoginKey key = KeyOf(caller);
    if (const auto found = signIns_.find(key); found != signIns_.end())
        return std::make_unique<Waiter>(*this, key, found->second);
    std::shared_ptr<Provider> provider = parts_.findProvider(caller);
    const bool isOfferedMode =
        caller.loginMode == TALIX_LOGIN_MODE_DEFAULT || caller.loginMode == TALIX_LOGIN_MODE_BROWSER;
    if (!provider || caller.clientId.empty() || caller.clientId.size() + caller.scope.size() > MaxProductText ||
        !isOfferedMode || CheckLogin(caller) == IdSuccess || signIns_.size() >= MaxSignIns)
        return nullptr; // Login says why.
    auto waiting = std::make_shared<WaitingSignIn>();
    waiting->signIn = SignIn::Begin(parts_.signIns, std::move(provider), key,
                                    [self = std::weak_ptr(self_), key](Outcome<ClientLogin> result) {
                                        if (const auto alive = self.lock())
                                            (*alive)->FinishSignIn(key, std::move(result));
                                    });
    signIns_[key] = waiting;
    return std::make_unique<Waiter>(*this, key, std::move(waiting));
}

void Logins::FinishSignIn(const LoginKey& key, Outcome<ClientLogin> result)
{
    const auto found = signIns_.find(key);
    if (found == signIns_.end())
        return;
    const std::shared_ptr<WaitingSignIn> waiting = found->second;
    signIns_.erase(found);
    if (const Failure* const failure = FailureOf(result))
    {
        waiting->result = LoginResult{Report(*failure), LoginDetail::NotLoggedIn};
        if (failure->code == IdLoginTimedOut || failure->code == IdBrowserNotOpened)
            Notify(Events::LoginDialogTimeoutInIdIPCServer, key.server, key.clientId, failure->code);
        return;
    }
    ClientLogin login = TakeResult(std::move(result));
    const Secret refreshToken = login.refreshToken.Clone();
    const Secret accessToken = login.accessToken.Clone();
    if (!book_->Put(key.server, std::move(login)))
    {
        waiting->signIn->Revoke(refreshToken, accessToken);
        waiting->result = LoginResult{Report({IdNotStored, {}, {}}), LoginDetail::NotLoggedIn};
        return;
    }
    waiting->result = LoginResult{IdSuccess, LoginDetail::LoggedIn};
    Notify(Events::LoggedIn, key.server, key.clientId);
    Notify(Events::TokenAvailable, key.server, key.clientId);
    ReportLater("Signed in at " + ServerName(key.server) + " for " + Shown(key.clientId));
}

/// The last host that waited has left.
void Logins::Leave(const LoginKey& key, const std::shared_ptr<WaitingSignIn>& waiting)
{
    const auto found = signIns_.find(key);
    if (found != signIns_.end() && found->second == waiting)
        waiting->signIn->End(IdLoginCancelled);
}

IdErrorCode Logins::CancelLogin(const Caller& caller)
{
    std::vector<std::shared_ptr<WaitingSignIn>> waiting; // Ending one changes the map.
    for (const auto& [key, each] : signIns_)
    {
        if (key.server == caller.server)
            waiting.push_back(each);
    }
    for (const std::shared_ptr<WaitingSignIn>& each : waiting)
        each->signIn->End(IdLoginCancelled);
    return IdSuccess;
}

void Logins::CancelAll()
{
    for (const Server server : Servers)
    {
        Caller caller;
        caller.server = server;
        CancelLogin(caller);
    }
}

IdErrorCode Logins::AutomatedLogin(const Caller&, const std::string&, const std::string&, bool)
{
    return IdFeatureNotOffered; // No standard has a counterpart: the user signs in at the provider.
}

// --- What is known --------------------------------------------------------------------------------------------------

IdErrorCode Logins::CheckLogin(const Caller& caller) const
{
    if (caller.clientId.empty())
        return book_->HasAny(caller.server) ? IdNoProductConfig : IdNotLoggedIn;
    bool isExpired = false;
    if (!book_->Read(KeyOf(caller), [&](const ClientLogin& login) {
            isExpired = login.refreshToken.IsEmpty() && IsPast(login.accessExpiry);
        }))
        return IdNotLoggedIn;
    return isExpired ? IdLoginExpired : IdSuccess;
}

IdErrorCode Logins::GetStatus(const Caller& caller, LoginStatus& status)
{
    status = {};
    book_->Read(KeyOf(caller), [&](const ClientLogin& login) {
        const bool canRefresh = !login.refreshToken.IsEmpty();
        status.loggedIn = true;
        status.tokenExpired = IsPast(login.accessExpiry);
        status.loginExpired = !canRefresh && status.tokenExpired;
        status.tokenExpiry = ToSeconds(login.accessExpiry);
        status.loginExpiry = canRefresh ? NoExpiry : status.tokenExpiry;
        status.userName = AccountOf(login.claims).userName;
    });
    return IdSuccess;
}

IdErrorCode Logins::GetAccount(const Caller& caller, Account& account)
{
    const bool isKnown =
        book_->Read(KeyOf(caller), [&](const ClientLogin& login) { account = AccountOf(login.claims); });
    return isKnown ? IdSuccess : CheckLogin(caller);
}

IdErrorCode Logins::GetAccessToken(const Caller& caller, bool, std::string& token)
{
    IdErrorCode code = CheckLogin(caller);
    if (code != IdSuccess)
        return code;
    book_->Read(KeyOf(caller), [&](const ClientLogin& login) {
        if (IsPast(login.accessExpiry))
            code = IdTokenExpired;
        else if (login.accessToken.Size() > MaxToken)
            code = Report(TooLong("an access token", login.accessToken));
        else
            token = login.accessToken.View();
    });
    return code;
}

IdErrorCode Logins::GetIdToken(const Caller& caller, std::string& token)
{
    IdErrorCode code = CheckLogin(caller);
    if (code != IdSuccess)
        return code;
    book_->Read(KeyOf(caller), [&](const ClientLogin& login) {
        if (IsPast(login.idExpiry))
            code = IdTokenExpired;
        else if (login.idToken.Size() > MaxToken)
            code = Report(TooLong("an ID token", login.idToken));
        else
            token = login.idToken.View();
    });
    return code;
}

IdErrorCode Logins::RefreshToken(const Caller& caller, bool)
{
    return CheckLogin(caller); // There is nothing to renew: Prepare has begun no refresh.
}

IdErrorCode Logins::OpenAddress(const Caller&, const std::string& target, std::uint16_t, std::string&)
{
    return IsWebAddress(target) ? IdFeatureNotOffered : IdInvalidAddress;
}

// --- Restore --------------------------------------------------------------------------------------------------------

void Logins::RestoreAll()
{
    for (const Server server : Servers)
    {
        Caller caller;
        caller.server = server;
        if (!parts_.findProvider(caller))
            continue;
        book_->Load(server, [this](const ClientLogin& login) {
            return !login.refreshToken.IsEmpty() || !IsPast(login.accessExpiry);
        });
        for (const LoginKey& key : book_->Keys(server))
        {
            parts_.signIns.report(TALIXLog::Info,
                                  "Login restored at " + ServerName(server) + " for " + Shown(key.clientId));
            caller.clientId = key.clientId;
            caller.scope = key.scope;
            bool canRefresh = false;
            book_->Read(key, [&](const ClientLogin& login) { canRefresh = !login.refreshToken.IsEmpty(); });
            // A provider that refuses ends the login; one that cannot be reached does not.
            if (canRefresh)
                JoinRefresh(caller, [](const std::optional<Failure>&) {});
        }
    }
}

IdErrorCode Logins::Restore(const Caller& caller, bool replace)
{
    if (!parts_.findProvider(caller))
        return Report(parts_.whyNone(caller.server));
    if (!book_->HasAny(caller.server))
        return IdNotLoggedIn; // What is stored is in memory already.
    if (!replace)
        return IdAlreadyLoggedIn;
    Notify(Events::LoginRestored, caller.server);
    return IdSuccess;
}

// --- Operations that wait for the provider --------------------------------------------------------------------------

std::unique_ptr<PendingWork> Logins::Prepare(const std::string& operation, const Caller& caller, bool flag)
{
    const bool isSignedIn = CheckLogin(caller) == IdSuccess;
    if (operation == Operations::Logout)
        return PrepareLogout(caller);
    if (!isSignedIn)
        return nullptr;
    if (operation == Operations::GetAccessToken)
        return PrepareAccessToken(caller, flag);
    if (operation == Operations::GetIdToken)
        return PrepareIdToken(caller);
    if (operation == Operations::GetUser)
        return PrepareAccount(caller);
    if (operation != Operations::RefreshToken)
        return nullptr;
    bool isPast = false;
    book_->Read(KeyOf(caller), [&](const ClientLogin& login) { isPast = IsPast(login.accessExpiry); });
    return !flag || isPast ? BeginRefresh(caller, {true, true}) : nullptr;
}

std::int64_t Logins::Until(const Provider& provider) const
{
    return parts_.signIns.ticks() +
           std::max<std::chrono::milliseconds>(CallLimit, provider.Config().requestLimit).count();
}

std::unique_ptr<PendingWork> Logins::PrepareAccessToken(const Caller& caller, bool renew)
{
    bool isFresh = false;
    bool isPast = false;
    bool canRefresh = false;
    book_->Read(KeyOf(caller), [&](const ClientLogin& login) {
        isFresh = IsFresh(login.accessExpiry, parts_.clock());
        isPast = IsPast(login.accessExpiry);
        canRefresh = !login.refreshToken.IsEmpty();
    });
    if (isFresh || !canRefresh)
        return nullptr;
    std::unique_ptr<PendingWork> work = BeginRefresh(caller, {isPast, false});
    // A host that does not want to wait gets the token that is still valid.
    return isPast || renew ? std::move(work) : nullptr;
}

std::unique_ptr<PendingWork> Logins::PrepareIdToken(const Caller& caller)
{
    bool isPast = false;
    bool canRefresh = false;
    book_->Read(KeyOf(caller), [&](const ClientLogin& login) {
        isPast = IsPast(login.idExpiry);
        canRefresh = !login.refreshToken.IsEmpty();
    });
    return isPast && canRefresh ? BeginRefresh(caller, {true, false}) : nullptr;
}

std::unique_ptr<PendingWork> Logins::BeginRefresh(const Caller& caller, RefreshUse use)
{
    const std::shared_ptr<Provider> provider = parts_.findProvider(caller);
    if (!provider)
        return nullptr;
    auto work = std::make_shared<Work>();
    work->isWholeOperation = use.isWholeOperation;
    JoinRefresh(caller, [work, use](const std::optional<Failure>& failure) {
        const bool isRefused = failure && (use.isNeeded || failure->code == IdGrantRefused);
        work->code = isRefused ? failure->code : IdSuccess;
    });
    return std::make_unique<Waiting>(work, parts_.signIns.ticks, Until(*provider) + Grace);
}

void Logins::JoinRefresh(const Caller& caller, SharedRefresh::Waiter waiter)
{
    const LoginKey key = KeyOf(caller);
    if (!refreshes_.Join(TextOf(key), std::move(waiter)))
        return;
    const std::shared_ptr<Provider> provider = parts_.findProvider(caller);
    const std::optional<LoginBook::Number> number = book_->NumberOf(key);
    if (!provider || !number)
        return refreshes_.Finish(TextOf(key), Failure{IdNotLoggedIn, {}, {}});
    const std::shared_ptr<Workers> workers = parts_.signIns.workers;
    workers->Run([provider, book = book_, key, number = *number, until = Until(*provider), workers,
                  self = std::weak_ptr(self_)] {
        std::optional<Failure> failure = [&]() -> std::optional<Failure> {
            Secret token;
            ClientLogin login;
            book->Read(key, [&](const ClientLogin& kept) {
                token = kept.refreshToken.Clone();
                login.subject = kept.subject;
                login.nonce = kept.nonce;
            });
            if (token.IsEmpty() || book->NumberOf(key) != number)
                return Failure{IdTokenExpired, "a refresh token", "none"};
            // A token that is in memory only would be lost with the process, after the provider has replaced it.
            if (!book->StoreAgain(key.server))
                return Failure{IdNotStored, {}, {}};
            Outcome<Grant> grant =
                provider->Refresh({key.clientId, token, login.subject, login.nonce,
                                   [&](const Secret& next) {
                                       const bool isKept = book->KeepRefreshToken(key, number, next);
                                       // The user has signed out meanwhile, so the new token is revoked.
                                       if (!isKept && book->NumberOf(key) != number)
                                           provider->Revoke(key.clientId, next, "refresh_token", until);
                                       return isKept;
                                   }},
                                  until);
            if (const Failure* const failed = FailureOf(grant))
                return *failed;
            auto taken = std::make_shared<Grant>(TakeResult(std::move(grant)));
            if (!book->Change(key, number, [&](ClientLogin& kept) { TakeGrant(std::move(*taken), kept); }))
                return Failure{IdNotStored, {}, {}};
            return std::nullopt;
        }();
        workers->Post([self, key, number, failure = std::move(failure)] {
            if (const auto alive = self.lock())
                (*alive)->FinishRefresh(key, number, failure);
        });
    });
}

void Logins::FinishRefresh(const LoginKey& key, LoginBook::Number number, const std::optional<Failure>& failure)
{
    if (!failure)
        Notify(Events::TokenRefreshed, key.server, key.clientId);
    else if (book_->NumberOf(key) == number)
    {
        Report(*failure);
        if (failure->code == IdGrantRefused && book_->Remove(key, number))
            Notify(Events::LoggedOut, key.server, key.clientId, IdGrantRefused);
    }
    refreshes_.Finish(TextOf(key), failure);
}

// --- User info ------------------------------------------------------------------------------------------------------

std::unique_ptr<PendingWork> Logins::PrepareAccount(const Caller& caller)
{
    bool hasUserInfo = false;
    bool isFresh = false;
    bool canRefresh = false;
    book_->Read(KeyOf(caller), [&](const ClientLogin& login) {
        hasUserInfo = login.hasUserInfo;
        isFresh = IsFresh(login.accessExpiry, parts_.clock());
        canRefresh = !login.refreshToken.IsEmpty();
    });
    const std::shared_ptr<Provider> provider = parts_.findProvider(caller);
    if (hasUserInfo || !provider)
        return nullptr;
    auto work = std::make_shared<Work>();
    const SharedRefresh::Waiter finish = [work](const std::optional<Failure>& failure) {
        work->code = failure ? failure->code : IdSuccess;
    };
    if (isFresh || !canRefresh)
        JoinUserInfo(caller, finish);
    else
        JoinRefresh(caller, [self = std::weak_ptr(self_), caller, finish](const std::optional<Failure>& failure) {
            const auto alive = self.lock();
            if (failure || !alive)
                return finish(failure);
            (*alive)->JoinUserInfo(caller, finish);
        });
    return std::make_unique<Waiting>(work, parts_.signIns.ticks, Until(*provider) + CallLimit.count() + Grace);
}

void Logins::JoinUserInfo(const Caller& caller, SharedRefresh::Waiter waiter)
{
    const LoginKey key = KeyOf(caller);
    if (!userInfos_.Join(TextOf(key), std::move(waiter)))
        return;
    const std::shared_ptr<Provider> provider = parts_.findProvider(caller);
    const std::optional<LoginBook::Number> number = book_->NumberOf(key);
    if (!provider || !number)
        return userInfos_.Finish(TextOf(key), Failure{IdNotLoggedIn, {}, {}});
    const std::shared_ptr<Workers> workers = parts_.signIns.workers;
    workers->Run([provider, book = book_, key, number = *number, until = Until(*provider), workers,
                  self = std::weak_ptr(self_)] {
        Secret token;
        std::string subject;
        book->Read(key, [&](const ClientLogin& login) {
            token = login.accessToken.Clone();
            subject = login.subject;
        });
        Outcome<Json::Value> claims = provider->UserInfo(token, subject, until);
        std::optional<Failure> failure;
        if (const Failure* const failed = FailureOf(claims))
            failure = *failed;
        else if (!book->Change(key, number, [&](ClientLogin& login) {
                     login.claims = UserClaims(login.claims, ResultOf(claims));
                     login.hasUserInfo = true;
                 }))
            failure = Failure{IdNotStored, {}, {}};
        workers->Post([self, key, failure] {
            const auto alive = self.lock();
            if (!alive)
                return;
            if (failure)
                (*alive)->Report(*failure);
            (*alive)->userInfos_.Finish(TextOf(key), failure);
        });
    });
}

// --- Sign-out -------------------------------------------------------------------------------------------------------

IdErrorCode Logins::Logout(const Caller&)
{
    return IdNotLoggedIn; // PrepareLogout signs out.
}

std::unique_ptr<PendingWork> Logins::PrepareLogout(const Caller& caller)
{
    if (!book_->HasAny(caller.server))
        return nullptr;
    ReportLate();
    CancelLogin(caller);
    auto work = std::make_shared<Work>();
    work->isWholeOperation = true;
    work->lateCode = IdSuccess; // The login on this machine is gone, whatever the provider does.
    const std::shared_ptr<Provider> provider = parts_.findProvider(caller);
    auto idToken = std::make_shared<Secret>();
    book_->Read(KeyOf(caller), [&](const ClientLogin& login) { *idToken = login.idToken.Clone(); });
    std::optional<std::vector<ClientLogin>> logins = book_->RemoveAll(caller.server);
    std::int64_t limit = parts_.signIns.ticks();
    if (!logins)
        work->code = Report({IdNotStored, {}, {}});
    else
    {
        Notify(Events::LoggedOut, caller.server);
        if (provider)
        {
            limit = Until(*provider) + Grace;
            Revoke(provider, *std::move(logins), work);
            FindSignOutPage(provider, caller.clientId, std::move(idToken));
        }
    }
    return std::make_unique<Waiting>(work, parts_.signIns.ticks, limit);
}

void Logins::Revoke(const std::shared_ptr<Provider>& provider, std::vector<ClientLogin> logins,
                    const std::shared_ptr<Work>& work)
{
    auto shared = std::make_shared<std::vector<ClientLogin>>(std::move(logins));
    const std::shared_ptr<Workers> workers = parts_.signIns.workers;
    workers->Run([provider, shared, work, workers, report = parts_.signIns.report, until = Until(*provider)] {
        for (const ClientLogin& login : *shared)
        {
            // A refresh token takes its access tokens with it. Without one, the access token remains to be revoked.
            const bool hasRefresh = !login.refreshToken.IsEmpty();
            const std::optional<Failure> failure =
                provider->Revoke(login.clientId, hasRefresh ? login.refreshToken : login.accessToken,
                                 hasRefresh ? "refresh_token" : "access_token", until);
            if (failure)
                report(TALIXLog::Warning,
                       "A token was not revoked; the login on this machine is gone. " + LogLine(*failure));
        }
        workers->Post([work] { work->code = IdSuccess; });
    });
}

/// Opens the provider's logout page, if there is one.
void Logins::FindSignOutPage(const std::shared_ptr<Provider>& provider, const std::string& clientId,
                             std::shared_ptr<const Secret> idToken)
{
    const std::shared_ptr<Workers> workers = parts_.signIns.workers;
    workers->Run([provider, clientId, idToken = std::move(idToken), until = Until(*provider), workers,
                  self = std::weak_ptr(self_)] {
        EndSessionRequest request;
        request.clientId = clientId;
        request.idToken = idToken.get();
        auto target = std::make_shared<Secret>(provider->EndSession(request, until));
        workers->Post([self, target] {
            const auto alive = self.lock();
            if (alive && !target->IsEmpty())
                (*alive)->ShowSignOutPage(std::move(*target));
        });
    });
}

void Logins::ShowSignOutPage(Secret target)
{
    SignOutPage page{std::make_shared<SignInPages>(parts_.signIns.random), nullptr,
                     parts_.signIns.ticks() + SignOutPageLimit};
    std::string problem;
    page.listener = parts_.signIns.listeners->Listen(
        "127.0.0.1", {},
        [pages = page.pages](std::string_view method, std::string_view path) { return pages->Reply(method, path); },
        problem);
    if (!page.listener)
        return parts_.signIns.report(TALIXLog::Warning, "The provider's logout page is not opened: " + problem);
    page.pages->SetTarget(std::move(target));
    parts_.signIns.workers->Run([browser = parts_.signIns.browser,
                                 address = RedirectUri("127.0.0.1", page.listener->Port(), page.pages->NewPath()),
                                 report = parts_.signIns.report] {
        if (!browser->Open(address))
            report(TALIXLog::Warning, "The provider's logout page is not opened: there is no browser");
    });
    signOutPages_.push_back(std::move(page));
}

// --- Timers and events ----------------------------------------------------------------------------------------------

void Logins::RunTimers()
{
    std::vector<std::shared_ptr<WaitingSignIn>> waiting; // Ending one changes the map.
    waiting.reserve(signIns_.size());
    for (const auto& [key, each] : signIns_)
        waiting.push_back(each);
    for (const std::shared_ptr<WaitingSignIn>& each : waiting)
        each->signIn->RunTimers();
    if (parts_.signIns.ticks() >= lateEnd_)
        ReportLate();
    signOutPages_.remove_if(
        [this](const SignOutPage& page) { return page.pages->WasUsed() || parts_.signIns.ticks() >= page.end; });
}

std::optional<std::int64_t> Logins::NextTimer() const
{
    std::optional<std::int64_t> next;
    const auto add = [&](std::int64_t time) { next = next ? std::min(*next, time) : time; };
    for (const auto& [key, waiting] : signIns_)
        add(waiting->signIn->NextTimer());
    for (const SignOutPage& page : signOutPages_)
        add(page.end);
    if (!lateLines_.empty())
        add(lateEnd_);
    return next;
}

IdErrorCode Logins::Report(const Failure& failure) const
{
    parts_.signIns.report(failure.code == IdLoginCancelled ? TALIXLog::Info : TALIXLog::Error, LogLine(failure));
    return failure.code;
}

void Logins::ReportLater(std::string line)
{
    lateLines_.push_back(std::move(line));
    lateEnd_ = parts_.signIns.ticks() + LogDelay;
}

void Logins::ReportLate()
{
    for (const std::string& line : std::exchange(lateLines_, {}))
        parts_.signIns.report(TALIXLog::Info, line);
}

void Logins::Notify(Kind kind, Server server, const std::string& clientId, IdErrorCode status) const
{
    parts_.onEvent({kind, server, clientId, status});
}

} // namespace Kestrany::Agent::OpenId
