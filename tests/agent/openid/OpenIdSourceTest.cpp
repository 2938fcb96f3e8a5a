// The source of identity with its worker threads, beside a provider, a browser and a store within the process. The
// thread sanitizer runs these tests, too.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "TestProvider.h"
#include "TestStore.h"
#include "identity/openid/OpenIdSource.h"
#include "identity/openid/Url.h"
#include "support/Patience.h"

namespace Kestrany::Agent::OpenId {

namespace {

namespace Events = IdentityServices::IdServicesConsts;

/// The provider for several threads. A request waits while the gate is closed.
class SharedProvider final : public Http
{
public:
    HttpReply Send(const HttpRequest& request) override
    {
        std::unique_lock lock(mutex_);
        const std::string path = ParseUrl(request.url)->path;
        ++held_;
        changed_.wait(lock, [&] { return closed_ != path; });
        --held_;
        return provider_.Send(request);
    }
    template <class Use>
    auto With(const Use& use)
    {
        const std::lock_guard lock(mutex_);
        return use(provider_);
    }
    /// Holds the requests of a path; empty for none.
    void Close(const std::string& path)
    {
        const std::lock_guard lock(mutex_);
        closed_ = path;
        changed_.notify_all();
    }
    /// Whether a request waits.
    bool IsHeld()
    {
        const std::lock_guard lock(mutex_);
        return held_ != 0;
    }
    int Count(const std::string& path)
    {
        return With([&](TestProvider& provider) {
            return static_cast<int>(std::count(provider.requested.begin(), provider.requested.end(), path));
        });
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::string closed_;
    int held_ = 0;
    TestProvider provider_;
};

class TestBrowser final : public Browser
{
public:
    bool Open(const std::string& address) override
    {
        const std::lock_guard lock(mutex_);
        opened_.push_back(address);
        return works;
    }
    std::vector<std::string> Opened()
    {
        const std::lock_guard lock(mutex_);
        return opened_;
    }
    std::atomic<bool> works{true};

private:
    std::mutex mutex_;
    std::vector<std::string> opened_;
};

class TestListeners final : public LoopbackListeners
{
public:
    std::unique_ptr<LoopbackListener> Listen(const std::string& host, const std::vector<std::uint16_t>& ports,
                                             Handler handler, std::string& problem) override
    {
        hosts.push_back(host);
        if (!areFree)
        {
            problem = "port 4000: error 10048";
            return nullptr;
        }
        const unsigned int port = ports.empty() ? ++last_ : ports.front();
        handlers_[port] = std::move(handler);
        return std::make_unique<Listener>(*this, port);
    }
    bool IsOpen(unsigned int port) const { return handlers_.count(port) != 0; }
    /// What the browser gets from an address of a listener.
    PageReply Get(const std::string& address)
    {
        const Url url = *ParseUrl(address);
        const auto found = handlers_.find(url.port);
        if (found == handlers_.end())
            return {0, {}, {}};
        PageReply reply = found->second("GET", url.path + (url.query ? "?" + *url.query : ""));
        lastReplies += reply.isLast ? 1 : 0;
        return reply;
    }

    bool areFree = true;
    int lastReplies = 0;
    std::vector<std::string> hosts;

private:
    class Listener final : public LoopbackListener
    {
    public:
        Listener(TestListeners& owner, unsigned int port) : owner_(owner), port_(port) {}
        ~Listener() override { owner_.handlers_.erase(port_); }
        Listener(const Listener&) = delete;
        Listener& operator=(const Listener&) = delete;
        unsigned int Port() const override { return port_; }

    private:
        TestListeners& owner_;
        const unsigned int port_;
    };
    unsigned int last_ = 50'000;
    std::map<unsigned int, Handler> handlers_;
};

class TestPrompts final : public Prompts
{
public:
    std::unique_ptr<Prompt> Show(PromptText text, PromptActions actions) override
    {
        shown.push_back(std::move(text));
        last = std::move(actions);
        return std::make_unique<Shown>(*this);
    }
    std::vector<PromptText> shown;
    PromptActions last;
    int open = 0;
    int problems = 0;

private:
    class Shown final : public Prompt
    {
    public:
        explicit Shown(TestPrompts& owner) : owner_(owner) { ++owner_.open; }
        ~Shown() override { --owner_.open; }
        Shown(const Shown&) = delete;
        Shown& operator=(const Shown&) = delete;
        void ShowBrowserProblem() override { ++owner_.problems; }

    private:
        TestPrompts& owner_;
    };
};

class OpenIdSourceTest : public testing::Test
{
protected:
    OpenIdSourceTest()
    {
        caller.server = TALIX_SERVER_PRODUCTION;
        caller.clientId = TestProvider::ClientId;
        caller.scope = "openid";
        caller.backoff = BackoffSettings{1, 1, 1, 0, 0};
    }
    ~OpenIdSourceTest() override
    {
        http->Close({});
        Stop();
    }

    void Stop()
    {
        if (source)
            source->Shutdown();
        source.reset();
        logins = nullptr;
    }
    /// Begins a server process: what was in memory is gone.
    SourceLogins& Start()
    {
        Stop();
        SourceParts parts;
        parts.clock = [this] { return TimePoint(std::chrono::seconds(TestProvider::Now + seconds)); };
        parts.ticks = [this] { return 1000 * seconds.load(); };
        parts.random = [this](void* bytes, std::size_t size) {
            const std::lock_guard lock(randomMutex_);
            const std::string digest = ReferenceSignatures().Digest(HashAlgorithm::Sha512, std::to_string(++random_));
            std::copy_n(digest.begin(), std::min(size, digest.size()), static_cast<char*>(bytes));
        };
        parts.signatures = std::make_shared<ReferenceSignatures>();
        parts.makeHttp = [this](const std::optional<ProxySettings>& proxy) {
            proxies.push_back(proxy ? proxy->host : "");
            return http;
        };
        parts.browser = browser;
        parts.listeners = listeners;
        parts.prompts = prompts;
        parts.openStore = [this](const std::string& identity) -> std::shared_ptr<LoginStore> {
            return identity == "server" ? store : nullptr;
        };
        parts.report = [this](TALIXLog::LogLevel, const std::string& line) {
            const std::lock_guard lock(logMutex_);
            log_ += line + "\n";
        };
        parts.wake = [] {};
        source = std::make_unique<OpenIdSource>(configs, "the problem", std::move(parts));
        source->Subscribe([this](const std::string&, const LoginEvent& event) { events.push_back(event.kind); });
        logins = source->FindLogins("server");
        return *logins;
    }
    std::string Log()
    {
        const std::lock_guard lock(logMutex_);
        return log_;
    }
    /// Runs the server's thread until something is true.
    template <class Condition>
    bool RunUntil(const Condition& condition)
    {
        const auto limit = std::chrono::steady_clock::now() + OrlindexTest::Patience;
        while (!condition())
        {
            if (std::chrono::steady_clock::now() >= limit)
                return false;
            source->RunTimers();
            std::this_thread::yield();
        }
        return true;
    }
    LoginResult ResultOfLogin(PendingLogin& pending)
    {
        std::optional<LoginResult> result;
        EXPECT_TRUE(RunUntil([&] { return (result = pending.Poll()).has_value(); })) << Log();
        return result.value_or(LoginResult());
    }
    /// Performs an operation as a host's session does.
    template <class Call>
    IdErrorCode Perform(const char* operation, bool flag, const Call& call)
    {
        const std::unique_ptr<PendingWork> work = logins->Prepare(operation, caller, flag);
        if (work)
        {
            std::optional<IdErrorCode> code;
            EXPECT_TRUE(RunUntil([&] { return (code = work->Poll()).has_value(); })) << Log();
            if (!code || *code != IdSuccess || work->IsWholeOperation())
                return code.value_or(IdFailed);
        }
        return call();
    }
    IdErrorCode AccessToken(std::string& token, bool renew = true)
    {
        return Perform(Operations::GetAccessToken, renew, [&] { return logins->GetAccessToken(caller, renew, token); });
    }
    IdErrorCode Refresh()
    {
        return Perform(Operations::RefreshToken, false, [&] { return logins->RefreshToken(caller, false); });
    }
    IdErrorCode SignOut()
    {
        return Perform(Operations::Logout, false, [&] { return logins->Logout(caller); });
    }
    IdErrorCode GetAccount(Account& account)
    {
        return Perform(Operations::GetUser, false, [&] { return logins->GetAccount(caller, account); });
    }

    /// The browser opens the short address, and follows to the provider. Returns the parameters of its page.
    std::map<std::string, std::string> FollowBrowser(std::size_t index = 0)
    {
        EXPECT_TRUE(RunUntil([&] { return browser->Opened().size() > index; })) << Log();
        const PageReply reply = listeners->Get(browser->Opened().at(index));
        EXPECT_EQ(reply.status, 302);
        std::map<std::string, std::string> parameters;
        if (const std::optional<Url> url = ParseUrl(reply.location.View()))
        {
            const std::optional<std::vector<Parameter>> form = ParseForm(url->query.value_or(""));
            for (const auto& [name, value] : *form)
                parameters[name] = value;
        }
        http->With([&](TestProvider& provider) { provider.claims["nonce"] = parameters["nonce"]; });
        return parameters;
    }
    int Redirect(std::map<std::string, std::string> parameters, const std::string& changes = {})
    {
        return listeners
            ->Get(parameters["redirect_uri"] +
                  "?code=code-1&iss=https%3A%2F%2Flogin.example.com&state=" + parameters["state"] + changes)
            .status;
    }
    LoginResult SignIn()
    {
        const std::size_t before = browser->Opened().size();
        const std::unique_ptr<PendingLogin> pending = logins->BeginLogin(caller);
        if (!pending)
            return {};
        Redirect(FollowBrowser(before));
        return ResultOfLogin(*pending);
    }
    void SetToken(const std::string& access, const std::string& refresh, int lifetime = 300)
    {
        http->With([&](TestProvider& provider) {
            provider.tokens["access_token"] = access;
            provider.tokens["refresh_token"] = refresh;
            provider.tokens["expires_in"] = lifetime;
        });
    }
    void ReplyAt(const std::string& path, const Json::Value& body, int status)
    {
        http->With([&](TestProvider& provider) {
            provider.hooks[path] = [body, status](const HttpRequest&) { return JsonReply(body, status); };
        });
    }
    void ReplyNormally(const std::string& path)
    {
        http->With([&](TestProvider& provider) { provider.hooks.erase(path); });
    }
    /// Whether the provider is asked to revoke a token, soon.
    bool IsRevoked(const std::string& token)
    {
        return RunUntil([&] {
            return http->With([&](TestProvider& provider) {
                return std::any_of(provider.forms.begin(), provider.forms.end(), [&](const TestProvider::Form& form) {
                    return form.count("token") && form.at("token") == token;
                });
            });
        });
    }
    /// The user signs in with another device from now on.
    void UseDevice()
    {
        configs.servers[TALIX_SERVER_PRODUCTION].signIn = SignInMethod::Device;
        Json::Value device;
        device["device_code"] = "device-1";
        device["user_code"] = "WDJB-MJHT";
        device["verification_uri"] = "https://login.example.com/device";
        device["expires_in"] = 600;
        device["interval"] = 5;
        ReplyAt("/device", device, 200);
    }
    static Json::Value Error(const char* error)
    {
        Json::Value body;
        body["error"] = error;
        return body;
    }

    std::atomic<std::int64_t> seconds{0};
    ProviderConfigs configs = [] {
        ProviderConfigs made;
        made.servers[TALIX_SERVER_PRODUCTION].issuer = TestProvider::Issuer;
        return made;
    }();
    const std::shared_ptr<SharedProvider> http = std::make_shared<SharedProvider>();
    const std::shared_ptr<TestBrowser> browser = std::make_shared<TestBrowser>();
    const std::shared_ptr<TestListeners> listeners = std::make_shared<TestListeners>();
    const std::shared_ptr<TestStore> store = std::make_shared<TestStore>();
    const std::shared_ptr<TestPrompts> prompts = std::make_shared<TestPrompts>();
    std::vector<std::string> proxies;
    std::vector<IdentityServices::IdServicesConsts::IdServicesEvent> events;
    std::unique_ptr<OpenIdSource> source;
    SourceLogins* logins = nullptr;
    Caller caller;

private:
    std::mutex logMutex_;
    std::string log_;
    std::mutex randomMutex_;
    unsigned int random_ = 0;
};

TEST_F(OpenIdSourceTest, AUserSignsInByTheBrowser)
{
    Start();
    const std::unique_ptr<PendingLogin> pending = logins->BeginLogin(caller);
    ASSERT_TRUE(pending);
    EXPECT_FALSE(pending->Poll());
    std::map<std::string, std::string> parameters = FollowBrowser();
    EXPECT_EQ(prompts->open, 1);
    EXPECT_EQ(parameters["code_challenge_method"], "S256");
    EXPECT_EQ(listeners->Get(browser->Opened().front()).status, 410) << "the short address is used once";
    EXPECT_EQ(listeners->lastReplies, 0);
    EXPECT_EQ(Redirect(parameters), 200);
    EXPECT_EQ(listeners->lastReplies, 1);
    EXPECT_EQ(Redirect(parameters), 410) << "the first redirect counts";
    const LoginResult result = ResultOfLogin(*pending);
    EXPECT_EQ(result.code, IdSuccess) << Log();
    EXPECT_EQ(result.detail, LoginDetail::LoggedIn);
    EXPECT_EQ(prompts->open, 0);
    EXPECT_FALSE(listeners->IsOpen(50'001));
    using Kinds = decltype(events);
    EXPECT_EQ(events, (Kinds{Events::LoggedIn, Events::TokenAvailable}));
    std::string token;
    EXPECT_EQ(AccessToken(token), IdSuccess);
    EXPECT_EQ(token, "access-1");
    EXPECT_NE(store->Text().find("refresh-1"), std::string::npos) << "stored before it is returned";
    EXPECT_EQ(logins->BeginLogin(caller), nullptr);
    LoginDetail detail{};
    EXPECT_EQ(logins->Login(caller, detail), IdSuccess);
    EXPECT_EQ(detail, LoginDetail::AlreadyLoggedIn);
}

TEST_F(OpenIdSourceTest, HostsDoNotWaitForTheLineOfASignInInTheLog)
{
    Start();
    EXPECT_EQ(SignIn().code, IdSuccess) << Log();
    source->RunTimers();
    EXPECT_EQ(Log().find("Signed in at"), std::string::npos);
    ++seconds;
    source->RunTimers();
    EXPECT_NE(Log().find("Signed in at production for "), std::string::npos) << Log();
}

TEST_F(OpenIdSourceTest, ALoginThatCannotBeStoredIsNoLogin)
{
    Start();
    store->works = false;
    SetToken("access-9", "refresh-9");
    EXPECT_EQ(SignIn().code, IdNotStored);
    EXPECT_TRUE(IsRevoked("refresh-9"));
    LoginStatus status;
    logins->GetStatus(caller, status);
    EXPECT_FALSE(status.loggedIn);
    store->works = true;
    EXPECT_EQ(SignIn().code, IdSuccess);
}

TEST_F(OpenIdSourceTest, HostsOfOneProductShareASignIn)
{
    Start();
    const std::unique_ptr<PendingLogin> first = logins->BeginLogin(caller);
    const std::unique_ptr<PendingLogin> second = logins->BeginLogin(caller);
    Redirect(FollowBrowser());
    EXPECT_EQ(ResultOfLogin(*first).code, IdSuccess);
    EXPECT_EQ(ResultOfLogin(*second).code, IdSuccess);
    EXPECT_EQ(http->Count("/token"), 1);
    EXPECT_EQ(browser->Opened().size(), 1u);
}

TEST_F(OpenIdSourceTest, ASignInEndsWithTheLastHostThatWaits)
{
    Start();
    std::unique_ptr<PendingLogin> first = logins->BeginLogin(caller);
    std::unique_ptr<PendingLogin> second = logins->BeginLogin(caller);
    FollowBrowser();
    first.reset();
    EXPECT_EQ(prompts->open, 1);
    second.reset();
    EXPECT_EQ(prompts->open, 0);
    EXPECT_FALSE(listeners->IsOpen(50'001));
    EXPECT_FALSE(source->NextTimer());
}

TEST_F(OpenIdSourceTest, ASignInIsCancelledByTheWindowAndByAHost)
{
    Start();
    std::unique_ptr<PendingLogin> pending = logins->BeginLogin(caller);
    FollowBrowser();
    prompts->last.cancel();
    EXPECT_EQ(ResultOfLogin(*pending).code, IdLoginCancelled);
    pending = logins->BeginLogin(caller);
    logins->CancelLogin(caller);
    EXPECT_EQ(ResultOfLogin(*pending).code, IdLoginCancelled);
    EXPECT_EQ(SignIn().code, IdSuccess);
}

TEST_F(OpenIdSourceTest, ASignInIsCancelledWhileTheProviderDoesNotReply)
{
    Start();
    http->Close("/.well-known/openid-configuration");
    std::unique_ptr<PendingLogin> pending = logins->BeginLogin(caller);
    logins->CancelLogin(caller);
    EXPECT_EQ(ResultOfLogin(*pending).code, IdLoginCancelled);
    http->Close({});
    EXPECT_EQ(SignIn().code, IdSuccess) << Log();
    EXPECT_EQ(browser->Opened().size(), 1u) << "the first one never got so far";
}

TEST_F(OpenIdSourceTest, TokensThatComeAfterTheCancelAreRevoked)
{
    Start();
    for (const bool hasRefresh : {true, false})
    {
        const std::string number = hasRefresh ? "7" : "8";
        SetToken("access-" + number, "refresh-7");
        if (!hasRefresh)
            http->With([](TestProvider& provider) { provider.tokens.removeMember("refresh_token"); });
        http->Close("/token");
        const std::size_t before = browser->Opened().size();
        const std::unique_ptr<PendingLogin> pending = logins->BeginLogin(caller);
        Redirect(FollowBrowser(before));
        EXPECT_TRUE(RunUntil([&] { return http->IsHeld(); }));
        logins->CancelLogin(caller);
        EXPECT_EQ(pending->Poll().value_or(LoginResult()).code, IdLoginCancelled) << "the host does not wait for it";
        http->Close({});
        EXPECT_TRUE(IsRevoked(hasRefresh ? "refresh-7" : "access-8")) << Log();
        EXPECT_FALSE(logins->IsValid(TALIX_SERVER_PRODUCTION));
        EXPECT_EQ(store->Text(), "");
    }
    SetToken("access-1", "refresh-1");
    EXPECT_EQ(SignIn().code, IdSuccess) << Log();
}

TEST_F(OpenIdSourceTest, ASignInTimesOut)
{
    Start();
    std::unique_ptr<PendingLogin> pending = logins->BeginLogin(caller);
    FollowBrowser();
    EXPECT_EQ(source->NextTimer(), 300'000);
    seconds = 300;
    EXPECT_EQ(ResultOfLogin(*pending).code, IdLoginTimedOut);
    EXPECT_EQ(events, decltype(events){Events::LoginDialogTimeoutInIdIPCServer});
}

TEST_F(OpenIdSourceTest, WithoutABrowserTheUserHasAWayOnAndTheTimeOutHasItsOwnCode)
{
    Start();
    browser->works = false;
    std::unique_ptr<PendingLogin> pending = logins->BeginLogin(caller);
    EXPECT_TRUE(RunUntil([&] { return prompts->problems == 1; }));
    EXPECT_NE(Log().find("(4037)"), std::string::npos);
    const std::string address = prompts->last.newAddress();
    seconds = 300;
    EXPECT_EQ(ResultOfLogin(*pending).code, IdBrowserNotOpened);
    seconds = 400;
    pending = logins->BeginLogin(caller);
    EXPECT_TRUE(RunUntil([&] { return prompts->problems == 2; }));
    EXPECT_EQ(listeners->Get(prompts->last.newAddress()).status, 302) << "the copied address works";
    EXPECT_EQ(listeners->Get(address).status, 0) << "that of an ended sign-in does not";
    logins->CancelLogin(caller);
}

TEST_F(OpenIdSourceTest, WithoutAPortTheSignInHasItsOwnCode)
{
    Start();
    listeners->areFree = false;
    EXPECT_EQ(ResultOfLogin(*logins->BeginLogin(caller)).code, IdNoRedirectPort);
    EXPECT_NE(Log().find("port 4000: error 10048"), std::string::npos);
}

TEST_F(OpenIdSourceTest, ARedirectWithAWrongStateDoesNotEndTheSignIn)
{
    Start();
    const std::unique_ptr<PendingLogin> pending = logins->BeginLogin(caller);
    std::map<std::string, std::string> parameters = FollowBrowser();
    std::map<std::string, std::string> wrong = parameters;
    wrong["state"] = "wrong";
    for (int count = 0; count < 20; ++count)
        EXPECT_EQ(Redirect(wrong), 400);
    source->RunTimers();
    EXPECT_FALSE(pending->Poll());
    const std::string log = Log();
    std::size_t lines = 0;
    for (std::size_t found = log.find("(4040)"); found != std::string::npos; found = log.find("(4040)", found + 1))
        ++lines;
    EXPECT_EQ(lines, 5u) << "the log has a limit";
    EXPECT_EQ(Redirect(parameters), 200);
    EXPECT_EQ(ResultOfLogin(*pending).code, IdSuccess);
}

TEST_F(OpenIdSourceTest, ARefusedIdTokenLeavesNothing)
{
    Start();
    http->With([](TestProvider& provider) { provider.claims["aud"] = "another"; });
    EXPECT_EQ(SignIn().code, IdIdTokenRefused);
    EXPECT_EQ(store->Text(), "");
    EXPECT_TRUE(events.empty());
}

TEST_F(OpenIdSourceTest, EveryProductHasALoginOfItsOwnEvenWithAnotherSubject)
{
    Start();
    ASSERT_EQ(SignIn().code, IdSuccess);
    const Caller first = caller;
    caller.clientId = "second";
    LoginStatus status;
    logins->GetStatus(caller, status);
    EXPECT_FALSE(status.loggedIn);
    http->With([](TestProvider& provider) {
        provider.claims["aud"] = "second";
        provider.claims["sub"] = "pairwise-2";
    });
    SetToken("access-2", "refresh-2");
    ASSERT_EQ(SignIn().code, IdSuccess) << Log();
    EXPECT_EQ(http->Count("/.well-known/openid-configuration"), 1);
    EXPECT_EQ(http->Count("/keys"), 1);
    std::string token;
    EXPECT_EQ(AccessToken(token), IdSuccess);
    EXPECT_EQ(token, "access-2");
    caller = first;
    EXPECT_EQ(AccessToken(token), IdSuccess);
    EXPECT_EQ(token, "access-1");
}

TEST_F(OpenIdSourceTest, AKeptTokenIsReturnedForAsLongAsItIsValidForAMinuteMore)
{
    Start();
    ASSERT_EQ(SignIn().code, IdSuccess);
    SetToken("access-2", "refresh-2");
    std::string token;
    seconds = 240;
    EXPECT_EQ(AccessToken(token), IdSuccess);
    EXPECT_EQ(token, "access-1");
    seconds = 241;
    EXPECT_EQ(AccessToken(token, false), IdSuccess);
    EXPECT_EQ(token, "access-1") << "who does not wait gets it until it expires";
    EXPECT_EQ(AccessToken(token), IdSuccess);
    EXPECT_EQ(token, "access-2");
    EXPECT_EQ(http->Count("/token"), 2);
    EXPECT_NE(store->Text().find("refresh-2"), std::string::npos);
}

TEST_F(OpenIdSourceTest, AThousandRequestsLeadToOneRefresh)
{
    Start();
    ASSERT_EQ(SignIn().code, IdSuccess);
    SetToken("access-2", "refresh-2");
    seconds = 300;
    http->Close("/token");
    std::vector<std::unique_ptr<PendingWork>> waiting;
    for (int count = 0; count < 1000; ++count)
        waiting.push_back(logins->Prepare(Operations::GetAccessToken, caller, count % 2 == 0));
    http->Close({});
    for (const std::unique_ptr<PendingWork>& work : waiting)
    {
        ASSERT_TRUE(work);
        EXPECT_TRUE(RunUntil([&] { return work->Poll().has_value(); }));
    }
    EXPECT_EQ(http->Count("/token"), 2) << "the sign-in, and one refresh";
    std::string token;
    EXPECT_EQ(logins->GetAccessToken(caller, true, token), IdSuccess);
    EXPECT_EQ(token, "access-2");
}

TEST_F(OpenIdSourceTest, AFailedRefreshLeavesATokenThatIsStillValid)
{
    Start();
    ASSERT_EQ(SignIn().code, IdSuccess);
    ReplyAt("/token", Error("server_error"), 500);
    seconds = 250;
    std::string token;
    EXPECT_EQ(AccessToken(token), IdSuccess);
    EXPECT_EQ(token, "access-1");
    seconds = 300;
    EXPECT_EQ(AccessToken(token), IdProviderFailed);
    ReplyNormally("/token");
    EXPECT_EQ(AccessToken(token), IdSuccess) << "the login was not lost";
}

TEST_F(OpenIdSourceTest, ARefusedGrantEndsTheLogin)
{
    Start();
    ASSERT_EQ(SignIn().code, IdSuccess);
    events.clear();
    ReplyAt("/token", Error("invalid_grant"), 400);
    EXPECT_EQ(Refresh(), IdGrantRefused);
    EXPECT_EQ(events, decltype(events){Events::LoggedOut});
    EXPECT_EQ(store->Text(), "");
    std::string token;
    EXPECT_EQ(AccessToken(token), IdNotLoggedIn);
}

TEST_F(OpenIdSourceTest, ANewRefreshTokenThatWasNotStoredIsStoredBeforeItIsUsed)
{
    Start();
    ASSERT_EQ(SignIn().code, IdSuccess);
    SetToken("access-2", "refresh-2");
    store->works = false;
    EXPECT_EQ(Refresh(), IdNotStored);
    const int before = http->Count("/token");
    EXPECT_EQ(Refresh(), IdNotStored);
    EXPECT_EQ(http->Count("/token"), before) << "it is not used";
    store->works = true;
    EXPECT_EQ(Refresh(), IdSuccess);
    http->With([](TestProvider& provider) { EXPECT_EQ(provider.forms.back()["refresh_token"], "refresh-2"); });
}

TEST_F(OpenIdSourceTest, TheLoginIsRestoredAndItsProviderIsAsked)
{
    Start();
    ASSERT_EQ(SignIn().code, IdSuccess);
    SetToken("access-2", "refresh-2");
    events.clear();
    Start();
    EXPECT_TRUE(logins->IsValid(TALIX_SERVER_PRODUCTION));
    EXPECT_TRUE(RunUntil([&] { return !events.empty(); })) << Log();
    EXPECT_EQ(events, decltype(events){Events::TokenRefreshed});
    http->With([](TestProvider& provider) { EXPECT_EQ(provider.forms.back()["refresh_token"], "refresh-1"); });
    // A provider that cannot be reached does not end the login.
    http->With([](TestProvider& provider) {
        provider.hooks["/token"] = [](const HttpRequest&) { return ProblemReply(HttpProblem::TlsRefused); };
    });
    Start();
    EXPECT_TRUE(RunUntil([&] { return Log().find("(4032)") != std::string::npos; }));
    EXPECT_TRUE(logins->IsValid(TALIX_SERVER_PRODUCTION));
    ReplyAt("/token", Error("invalid_grant"), 400);
    events.clear();
    Start();
    EXPECT_TRUE(RunUntil([&] { return !events.empty(); }));
    EXPECT_EQ(events, decltype(events){Events::LoggedOut});
    EXPECT_FALSE(logins->IsValid(TALIX_SERVER_PRODUCTION));
}

TEST_F(OpenIdSourceTest, ALoginOfAnotherIssuerIsNotRestored)
{
    Start();
    ASSERT_EQ(SignIn().code, IdSuccess);
    configs.servers[TALIX_SERVER_PRODUCTION].issuer = "https://other.example.com";
    Start();
    EXPECT_FALSE(logins->IsValid(TALIX_SERVER_PRODUCTION));
    EXPECT_NE(Log().find("refused"), std::string::npos);
}

TEST_F(OpenIdSourceTest, TheUserInfoIsRequestedOnceAndMustBeAboutTheUser)
{
    Start();
    ASSERT_EQ(SignIn().code, IdSuccess);
    EXPECT_EQ(http->Count("/userinfo"), 0);
    Account account;
    http->With([](TestProvider& provider) { provider.userInfo["sub"] = "another"; });
    EXPECT_EQ(GetAccount(account), IdSubjectDiffers);
    http->With([](TestProvider& provider) { provider.userInfo["sub"] = "user-1"; });
    EXPECT_EQ(GetAccount(account), IdSuccess);
    EXPECT_EQ(account.userId, "user-1");
    EXPECT_EQ(account.email, "ann@example.com");
    EXPECT_EQ(GetAccount(account), IdSuccess);
    EXPECT_EQ(http->Count("/userinfo"), 2);
}

TEST_F(OpenIdSourceTest, ALogoutRevokesAndShowsTheProvidersPage)
{
    Start();
    ASSERT_EQ(SignIn().code, IdSuccess);
    events.clear();
    EXPECT_EQ(SignOut(), IdSuccess);
    EXPECT_EQ(events, decltype(events){Events::LoggedOut});
    EXPECT_EQ(store->Text(), "");
    http->With([](TestProvider& provider) { EXPECT_EQ(provider.forms.back()["token"], "refresh-1"); });
    EXPECT_TRUE(RunUntil([&] { return browser->Opened().size() == 2; }));
    EXPECT_EQ(browser->Opened().back().find("id_token"), std::string::npos);
    const PageReply page = listeners->Get(browser->Opened().back());
    EXPECT_NE(page.location.View().find("/logout?id_token_hint="), std::string_view::npos);
    source->RunTimers();
    EXPECT_EQ(listeners->Get(browser->Opened().back()).status, 0) << "its listener is gone";
    EXPECT_EQ(SignOut(), IdNotLoggedIn);
}

TEST_F(OpenIdSourceTest, ALogoutSucceedsWhileTheProviderDoesNotReply)
{
    Start();
    ASSERT_EQ(SignIn().code, IdSuccess);
    http->Close("/revoke");
    const std::unique_ptr<PendingWork> work = logins->Prepare(Operations::Logout, caller, false);
    EXPECT_FALSE(logins->IsValid(TALIX_SERVER_PRODUCTION)) << "gone at once";
    EXPECT_EQ(store->Text(), "");
    EXPECT_FALSE(work->Poll());
    seconds = 60;
    EXPECT_EQ(work->Poll(), IdSuccess);
}

TEST_F(OpenIdSourceTest, ATokenThatComesAfterTheLogoutIsRevoked)
{
    Start();
    ASSERT_EQ(SignIn().code, IdSuccess);
    SetToken("access-2", "refresh-2");
    http->Close("/token");
    const std::unique_ptr<PendingWork> refresh = logins->Prepare(Operations::RefreshToken, caller, false);
    EXPECT_TRUE(RunUntil([&] { return http->IsHeld(); }));
    EXPECT_EQ(SignOut(), IdSuccess);
    http->Close({});
    EXPECT_TRUE(RunUntil([&] { return refresh->Poll().has_value(); }));
    EXPECT_FALSE(logins->IsValid(TALIX_SERVER_PRODUCTION));
    EXPECT_EQ(store->Text(), "");
    EXPECT_TRUE(IsRevoked("refresh-2"));
}

TEST_F(OpenIdSourceTest, AUserSignsInWithAnotherDevice)
{
    UseDevice();
    ReplyAt("/token", Error("authorization_pending"), 400);
    Start();
    const std::unique_ptr<PendingLogin> pending = logins->BeginLogin(caller);
    EXPECT_TRUE(RunUntil([&] { return !prompts->shown.empty(); }));
    EXPECT_TRUE(prompts->shown.back().isDevice);
    EXPECT_EQ(prompts->shown.back().userCode, "WDJB-MJHT");
    EXPECT_TRUE(browser->Opened().empty());
    EXPECT_EQ(source->NextTimer(), 5'000);
    seconds = 5;
    EXPECT_TRUE(RunUntil([&] { return source->NextTimer() == 10'000; }));
    ReplyNormally("/token");
    seconds = 10;
    EXPECT_EQ(ResultOfLogin(*pending).code, IdSuccess) << Log();
}

TEST_F(OpenIdSourceTest, TokensOfAnotherDeviceThatComeAfterTheCancelAreRevoked)
{
    UseDevice();
    Start();
    const std::unique_ptr<PendingLogin> pending = logins->BeginLogin(caller);
    EXPECT_TRUE(RunUntil([&] { return !prompts->shown.empty(); }));
    http->Close("/token");
    seconds = 5;
    EXPECT_TRUE(RunUntil([&] { return http->IsHeld(); }));
    logins->CancelLogin(caller);
    http->Close({});
    EXPECT_TRUE(IsRevoked("refresh-1")) << Log();
    EXPECT_FALSE(logins->IsValid(TALIX_SERVER_PRODUCTION));
}

TEST_F(OpenIdSourceTest, WhatTheHostSetIsUsedForItsRequests)
{
    Start();
    caller.proxy = ProxySettings{"proxy.example.com", "", "", 8080};
    ASSERT_EQ(SignIn().code, IdSuccess);
    EXPECT_EQ(proxies, (std::vector<std::string>{"", "proxy.example.com"}));
}

TEST_F(OpenIdSourceTest, ALongTokenAndALongProductHaveACode)
{
    Start();
    SetToken(std::string(MaxToken + 1, 'a'), "refresh-1");
    ASSERT_EQ(SignIn().code, IdSuccess);
    std::string token;
    EXPECT_EQ(AccessToken(token), IdTextTooLong);
    caller.scope = std::string(MaxProductText, 'a');
    EXPECT_EQ(logins->BeginLogin(caller), nullptr);
    LoginDetail detail{};
    EXPECT_EQ(logins->Login(caller, detail), IdTextTooLong);
}

TEST_F(OpenIdSourceTest, ALoginWithoutARefreshTokenExpiresWithItsAccessToken)
{
    Start();
    http->With([](TestProvider& provider) { provider.tokens.removeMember("refresh_token"); });
    ASSERT_EQ(SignIn().code, IdSuccess);
    LoginStatus status;
    logins->GetStatus(caller, status);
    EXPECT_TRUE(status.IsValid());
    EXPECT_EQ(status.loginExpiry, TestProvider::Now + 300);
    seconds = 300;
    logins->GetStatus(caller, status);
    EXPECT_TRUE(status.loginExpired);
    std::string token;
    EXPECT_EQ(AccessToken(token), IdLoginExpired);
    EXPECT_EQ(SignIn().code, IdSuccess) << "the next sign-in works: " << Log();
}

TEST_F(OpenIdSourceTest, WithoutAConfigurationNobodySignsIn)
{
    source = std::make_unique<OpenIdSource>(std::nullopt, "line 1: wrong",
                                            SourceParts{{},
                                                        [] { return std::int64_t{0}; },
                                                        {},
                                                        {},
                                                        {},
                                                        {},
                                                        {},
                                                        {},
                                                        [this](const std::string&) { return store; },
                                                        [](TALIXLog::LogLevel, const std::string&) {},
                                                        [] {}});
    SourceLogins* const found = source->FindLogins("server");
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->BeginLogin(caller), nullptr);
    LoginDetail detail{};
    EXPECT_EQ(found->Login(caller, detail), IdProviderConfigInvalid);
    EXPECT_EQ(found->Restore(caller, true), IdProviderConfigInvalid);
    EXPECT_FALSE(found->IsValid(TALIX_SERVER_PRODUCTION));
}

TEST_F(OpenIdSourceTest, TheEndOfTheProcessWaitsForNoUserAndNoProvider)
{
    Start();
    http->Close("/.well-known/openid-configuration");
    const std::unique_ptr<PendingLogin> pending = logins->BeginLogin(caller);
    EXPECT_TRUE(RunUntil([&] { return http->IsHeld(); }));
    EXPECT_FALSE(source->Shutdown()) << "a request cannot be cancelled";
    EXPECT_TRUE(pending->Poll()) << "but nobody waits for it";
    http->Close({});
}

} // namespace

} // namespace Kestrany::Agent::OpenId
