// Signing in with a real provider, as a host does it: by the plugin module, and the server application in a folder with
// a configuration. sign-in-tests.mjs starts this program, the provider, and the browser.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <windows.h>

#include <shellapi.h>

#include <json/value.h>

#include "Environment.h"
#include "EventRecorder.h"
#include "OwnJob.h"
#include "identity/Json.h"
#include "identity/openid/Failure.h"
#include "identity/openid/windows/WinHttpClient.h"
#include "load/contract/ISSOClient.h"
#include "load/contract/ISSOClientModule.h"
#include "load/contract/ISSOClientPrivate.h"
#include "load/contract/ISSOServerManager.h"
#include "orlindex/ProductConfig.h"
#include "platform/Base.h"
#include "platform/Folders.h"
#include "platform/LogFile.h"
#include "support/Patience.h"

namespace Kestrany::Agent::OpenId {

namespace {

using namespace IdentityServices;

constexpr std::int64_t Limit = OrlindexTest::PatienceMilliseconds;

std::string Variable(const char* name)
{
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string() : value;
}

std::wstring Folder()
{
    return Widen(Variable("OPENID_FOLDER"));
}

std::string ContentsOf(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void Write(const std::wstring& file, const std::string& text)
{
    std::ofstream(std::filesystem::path(file), std::ios::binary | std::ios::trunc) << text;
}

/// The control interface of the provider.
Json::Value Control(const std::string& operation, const Json::Value& values = Json::objectValue)
{
    static WinHttpClient client;
    HttpRequest request;
    request.url = Variable("OPENID_CONTROL") + "/" + operation;
    request.form = Secret(WriteJson(values));
    request.maxReply = 16 * 1024 * 1024;
    request.limit = OrlindexTest::Patience;
    const HttpReply reply = client.Send(request);
    EXPECT_EQ(reply.status, 200) << operation << " " << reply.detail << reply.body.View();
    return ReadJsonObject(std::string(reply.body.View())).value_or(Json::objectValue);
}

class SignInTest : public testing::Test
{
protected:
    SignInTest()
    {
        Control("reset");
        Control("endSessions");
        Control("revokeGrants");
        Configure({});
        Browse("signIn");
        std::filesystem::remove(Profile());
        servers.ConfigureServerApp((Folder() + L"\\Pellwick").c_str(),
                                   (Folder() + L"\\Pellwick\\Pellwick.exe").c_str());
        static int count = 0;
        const std::string identity = OwnIdentity("OpenId" + std::to_string(++count));
        servers.SetProcessIdentityName(identity.c_str());
        servers.SetServerIdentityName(identity.c_str());
        client.SetServer(TALIX_SERVER_PRODUCTION);
        UseProduct("example-host");
        client.AddObserver(&observer);
    }
    ~SignInTest() override
    {
        client.SetLoginMode(TALIX_LOGIN_MODE_DEFAULT);
        module.Uninitialize();
        servers.QuitSSOServerProcess(Limit);
        Control("setLifetimes", Lifetime(3600));
    }

    static Json::Value Lifetime(int seconds)
    {
        Json::Value lifetimes;
        lifetimes["AccessToken"] = seconds;
        return lifetimes;
    }

    /// Writes the configuration of the server that starts next. `changes` replace its members.
    static void Configure(const Json::Value& changes, const std::string& issuer = Variable("OPENID_ISSUER"))
    {
        Json::Value config;
        Json::Value& provider = config["servers"]["production"];
        provider["issuer"] = issuer;
        config["window"] = false;
        for (const std::string& name : changes.isObject() ? changes.getMemberNames() : Json::Value::Members())
            provider[name] = changes[name];
        WriteConfig(WriteJson(config));
    }
    /// With the window. Configure chooses none.
    static void ConfigureWithWindow()
    {
        Json::Value config;
        config["servers"]["production"]["issuer"] = Variable("OPENID_ISSUER");
        WriteConfig(WriteJson(config));
    }
    static void WriteConfig(const std::string& text) { Write(Folder() + L"\\Pellwick\\Pellwick.config.json", text); }

    static std::wstring Profile() { return Folder() + L"\\profile.json"; }
    /// What the user does in the browser.
    static void Browse(const std::string& behavior, const std::string& user = "sam")
    {
        const std::string folder = Variable("OPENID_BROWSERS_FOLDER");
        Json::Value settings;
        settings["behavior"] = behavior;
        settings["user"] = user;
        settings["profile"] = folder + "/profile.json";
        settings["ca"] = Variable("OPENID_ROOT");
        settings["log"] = folder + "/browser.log";
        Write(Folder() + L"\\browser.json", WriteJson(settings));
    }

    void UseProduct(const char* clientId) const
    {
        ProductConfig product;
        product.SetOAuth2ClientID(clientId);
        product.SetOAuth2TokenScope("openid profile email");
        EXPECT_EQ(client.SetProductConfig(TALIX_SERVER_PRODUCTION, product), ::IdSuccess);
    }

    IdErrorCode LogIn()
    {
        detail = -1;
        return client.Login(detail);
    }
    /// Ends the login without a page in the browser, whose cookies the next sign-in uses.
    void EndGrant() const
    {
        Control("revokeGrants");
        EXPECT_EQ(client.RefreshOAuth2Token(false), IdGrantRefused);
    }
    std::string Token(bool wait = true) const
    {
        wchar_t token[4096] = L"";
        code = client.GetOAuth2AccessToken(token, 4096, wait);
        return Narrow(token);
    }
    std::string IdToken() const
    {
        wchar_t token[4096] = L"";
        code = client.GetOAuth2IdToken(token, 4096);
        return Narrow(token);
    }
    Json::Value Profile(IdErrorCode expected) const
    {
        char text[8192] = "";
        int size = sizeof text;
        EXPECT_EQ(client.GetProfileInfo(text, &size), expected);
        return ReadJsonObject(text).value_or(Json::objectValue);
    }
    std::vector<std::string> TakeEvents()
    {
        client.IsLoggedIn(); // A response arrives after earlier events.
        client.DispatchEvent();
        return std::exchange(observer.kinds, {});
    }
    /// Waits for an event that the server sends by itself.
    void AwaitEvent(const std::string& kind)
    {
        const auto limit = std::chrono::steady_clock::now() + OrlindexTest::Patience;
        while (std::find(observer.kinds.begin(), observer.kinds.end(), kind) == observer.kinds.end())
        {
            ASSERT_LT(std::chrono::steady_clock::now(), limit) << kind;
            if (client.HasEvent())
                client.DispatchEvent();
            else
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }
    /// Waits until the browser shows the provider's logout page.
    static void AwaitLogoutPage()
    {
        const auto limit = std::chrono::steady_clock::now() + OrlindexTest::Patience;
        while (Requests("endSession") == 0 && std::chrono::steady_clock::now() < limit)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_GE(Requests("endSession"), 1);
    }
    static int Requests(const std::string& endpoint) { return Control("state")["counts"][endpoint].asInt(); }
    /// What was logged since the test began.
    std::string Log() const
    {
        const std::string log = ContentsOf(DefaultLogFile());
        return log.substr(log.size() < logged_ ? 0 : logged_);
    }

    ISSOClient& client = *PluginFactory().GetSSOClient();
    ISSOClientModule& module = *PluginFactory().GetSSOClientModule();
    ISSOServerManager& servers = *PluginFactory().GetSSOServerManager();
    EventRecorder observer;
    int detail = -1;
    mutable IdErrorCode code = ::IdFailed;

private:
    const std::size_t logged_ = ContentsOf(DefaultLogFile()).size();
};

TEST_F(SignInTest, AUserSignsInByTheBrowser)
{
    ASSERT_EQ(LogIn(), ::IdSuccess) << Log();
    EXPECT_EQ(detail, 0);
    EXPECT_EQ(TakeEvents(), (std::vector<std::string>{"LoggedIn", "TokenAvailable"}));
    EXPECT_TRUE(client.IsLoggedIn());
    EXPECT_TRUE(client.IsOAuth2TokenAvailable());
    EXPECT_EQ(Requests("discovery"), 1);
    EXPECT_EQ(Requests("keys"), 1);
    EXPECT_EQ(Requests("token"), 1);
    EXPECT_EQ(Requests("userinfo"), 0);

    const std::string token = Token();
    EXPECT_EQ(code, ::IdSuccess);
    EXPECT_FALSE(token.empty());
    EXPECT_EQ(Token(false), token);
    const std::string idToken = IdToken();
    EXPECT_EQ(std::count(idToken.begin(), idToken.end(), '.'), 2);
    EXPECT_EQ(Requests("token"), 1) << "the kept tokens are fresh";

    char name[64] = "";
    char mail[64] = "";
    talix_user_info info{};
    info.user_name = name;
    info.user_name_size = sizeof name;
    info.email = mail;
    info.email_size = sizeof mail;
    EXPECT_EQ(client.GetUserInfo(&info), ::IdSuccess);
    EXPECT_STREQ(name, "sam");
    EXPECT_STREQ(mail, "sam@example.com");
    EXPECT_EQ(Profile(::IdSuccess)["displayName"], "sam Example");
    EXPECT_EQ(Requests("userinfo"), 1);

    EXPECT_EQ(LogIn(), ::IdSuccess);
    EXPECT_EQ(detail, 1) << "already";
}

TEST_F(SignInTest, ASecondProductSignsInWithoutAPassword)
{
    ASSERT_EQ(LogIn(), ::IdSuccess) << Log();
    UseProduct("second-host");
    EXPECT_FALSE(client.IsLoggedIn());
    Token();
    EXPECT_EQ(code, IdNotLoggedIn);
    ASSERT_EQ(LogIn(), ::IdSuccess) << Log();
    EXPECT_EQ(Requests("discovery"), 1);
    EXPECT_EQ(Requests("keys"), 1);
    EXPECT_EQ(Requests("token"), 2);
    const std::string log = ContentsOf(Folder() + L"\\browser.log");
    EXPECT_NE(log.rfind("\"passwords\":0"), std::string::npos) << log;
    const std::string token = Token();
    UseProduct("example-host");
    EXPECT_NE(Token(), token);
}

TEST_F(SignInTest, ATokenIsRefreshedWithRotation)
{
    ASSERT_EQ(LogIn(), ::IdSuccess) << Log();
    std::set<std::string> tokens{Token()};
    for (int round = 0; round < 3; ++round)
    {
        EXPECT_EQ(client.RefreshOAuth2Token(false), ::IdSuccess) << Log();
        tokens.insert(Token());
    }
    EXPECT_EQ(tokens.size(), 4u);
    EXPECT_EQ(client.RefreshOAuth2Token(true), ::IdSuccess);
    EXPECT_EQ(Requests("token:refresh_token"), 3) << "the last token has not expired";
    EXPECT_EQ(Control("state")["refreshTokens"]["example-host"], 1);
    const std::vector<std::string> events = TakeEvents();
    EXPECT_EQ(std::count(events.begin(), events.end(), "TokenRefreshed"), 3);
}

TEST_F(SignInTest, ManyRequestsForAnExpiringTokenLeadToOneRefresh)
{
    Control("setLifetimes", Lifetime(30)); // Less than the minute for which a kept token must be valid.
    ASSERT_EQ(LogIn(), ::IdSuccess) << Log();
    Control("setLifetimes", Lifetime(3600));
    const std::string before = Token(false);
    EXPECT_EQ(code, ::IdSuccess) << "a host that does not wait gets the kept token";
    std::vector<std::future<std::string>> asking;
    for (int count = 0; count < 40; ++count)
        asking.push_back(std::async(std::launch::async, [&] { return Token(); }));
    std::set<std::string> tokens;
    for (std::future<std::string>& each : asking)
        tokens.insert(each.get());
    EXPECT_EQ(tokens.size(), 1u);
    EXPECT_EQ(tokens.count(before), 0u);
    EXPECT_EQ(Requests("token:refresh_token"), 1);
}

TEST_F(SignInTest, TheLoginIsRestoredFromTheRefreshToken)
{
    ASSERT_EQ(LogIn(), ::IdSuccess) << Log();
    const std::string before = Token();
    module.Uninitialize();
    ASSERT_TRUE(servers.QuitSSOServerProcess(Limit));
    observer.kinds.clear();
    client.AddObserver(&observer);
    module.Initialize(false);
    AwaitEvent("LoginRestored");
    AwaitEvent("TokenRefreshed");
    EXPECT_TRUE(client.IsLoggedIn());
    EXPECT_NE(Token(), before);
    EXPECT_EQ(code, ::IdSuccess);
    EXPECT_EQ(Profile(::IdSuccess)["userName"], "sam");
}

TEST_F(SignInTest, ARevokedGrantEndsTheLoginAtTheServersStart)
{
    ASSERT_EQ(LogIn(), ::IdSuccess) << Log();
    module.Uninitialize();
    ASSERT_TRUE(servers.QuitSSOServerProcess(Limit));
    Control("revokeGrants");
    client.AddObserver(&observer);
    module.Initialize(false);
    AwaitEvent("LoggedOut");
    EXPECT_FALSE(client.IsLoggedIn());
    EXPECT_NE(Log().find("The provider no longer accepts the login (4047)"), std::string::npos);
    EXPECT_EQ(LogIn(), ::IdSuccess) << "the next sign-in works";
}

TEST_F(SignInTest, ARevokedGrantEndsTheLoginAtARefresh)
{
    ASSERT_EQ(LogIn(), ::IdSuccess) << Log();
    TakeEvents();
    Control("revokeGrants");
    EXPECT_EQ(client.RefreshOAuth2Token(false), IdGrantRefused);
    EXPECT_EQ(TakeEvents(), (std::vector<std::string>{"LoggedOut"}));
    Token();
    EXPECT_EQ(code, IdNotLoggedIn);
}

TEST_F(SignInTest, ALogoutRevokesAndEndsTheSession)
{
    ASSERT_EQ(LogIn(), ::IdSuccess) << Log();
    TakeEvents();
    int result = -1;
    ASSERT_EQ(client.Logout(result, TALIX_LOGOUT_DEFAULT), ::IdSuccess) << Log();
    EXPECT_EQ(result, 0);
    EXPECT_EQ(TakeEvents(), (std::vector<std::string>{"LoggedOut"}));
    EXPECT_FALSE(client.IsLoggedIn());
    EXPECT_EQ(Control("state")["refreshTokens"].get("example-host", 0), 0);
    EXPECT_EQ(client.Logout(result, TALIX_LOGOUT_DEFAULT), IdNotLoggedIn);
    AwaitLogoutPage();
}

TEST_F(SignInTest, ALogoutSucceedsWithoutTheProvider)
{
    ASSERT_EQ(LogIn(), ::IdSuccess) << Log();
    Json::Value fault;
    fault["endpoint"] = "revocation";
    fault["effect"] = "status";
    fault["status"] = 400;
    Control("fault", fault);
    int result = -1;
    EXPECT_EQ(client.Logout(result, TALIX_LOGOUT_FORCE), ::IdSuccess) << Log();
    EXPECT_FALSE(client.IsLoggedIn());
    EXPECT_NE(Log().find("A token was not revoked; the login on this machine is gone."), std::string::npos);
    AwaitLogoutPage();
}

TEST_F(SignInTest, ARefusedRedirectHasItsCodeAndTheNextSignInWorks)
{
    const std::pair<const char*, IdErrorCode> cases[] = {{"deny", IdSignInDenied},
                                                         {"wrongIssuer", IdRedirectOfOtherIssuer},
                                                         {"noIssuer", IdRedirectOfOtherIssuer},
                                                         {"repeatedParameter", IdRedirectMalformed},
                                                         {"codeAndError", IdRedirectMalformed},
                                                         {"noCode", IdRedirectMalformed},
                                                         {"otherCode", IdGrantRefused}};
    for (const auto& [behavior, expected] : cases)
    {
        Browse(behavior);
        EXPECT_EQ(LogIn(), expected) << behavior;
        EXPECT_EQ(detail, 2);
        EXPECT_FALSE(client.IsLoggedIn());
        EXPECT_NE(Log().rfind("(" + std::to_string(static_cast<int>(expected)) + ")"), std::string::npos);
    }
    Browse("signIn");
    EXPECT_EQ(LogIn(), ::IdSuccess);
}

TEST_F(SignInTest, WhatIsNotTheRedirectDoesNotDisturbIt)
{
    for (const char* const behavior : {"wrongStateThenReal", "otherPathThenReal", "postThenReal", "longThenReal",
                                       "nonsenseThenReal", "idleConnectionsThenReal", "twice"})
    {
        Browse(behavior);
        EXPECT_EQ(LogIn(), ::IdSuccess) << behavior << Log();
        EndGrant();
    }
}

TEST_F(SignInTest, AWaitingLoginDisturbsNobodyAndCanBeCancelled)
{
    Browse("neverAnswers");
    std::future<IdErrorCode> waiting = std::async(std::launch::async, [&] { return LogIn(); });
    const auto limit = std::chrono::steady_clock::now() + OrlindexTest::Patience;
    while (Requests("authorization") == 0 && std::chrono::steady_clock::now() < limit)
    {
        EXPECT_FALSE(client.IsLoggedIn()); // Has its response while the login waits.
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    EXPECT_EQ(waiting.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    int result = -1;
    EXPECT_EQ(client.Logout(result, TALIX_LOGOUT_DEFAULT), IdNotLoggedIn);
    EXPECT_EQ(waiting.get(), IdLoginCancelled);
    Browse("signIn");
    EXPECT_EQ(LogIn(), ::IdSuccess);
}

// Another CTest test runs it, on a virtual screen.
TEST_F(SignInTest, DISABLED_TheWindowIsShownUnlessItIsSwitchedOffOnAScreen)
{
    const auto findWindow = [] { return FindWindowW(L"Kestrany.Pellwick.SignIn", nullptr); };
    Browse("neverAnswers");
    ConfigureWithWindow();
    std::future<IdErrorCode> waiting = std::async(std::launch::async, [&] { return LogIn(); });
    const auto limit = std::chrono::steady_clock::now() + OrlindexTest::Patience;
    while (findWindow() == nullptr && std::chrono::steady_clock::now() < limit)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    ASSERT_NE(findWindow(), nullptr) << Log();
    EXPECT_EQ(Log().find("Sign in at"), std::string::npos) << "the window has the address";
    PostMessageW(findWindow(), WM_CLOSE, 0, 0);
    EXPECT_EQ(waiting.get(), IdLoginCancelled);

    module.Uninitialize();
    servers.QuitSSOServerProcess(Limit);
    Configure({});
    const int before = Requests("authorization");
    waiting = std::async(std::launch::async, [&] { return LogIn(); });
    while (Requests("authorization") == before && std::chrono::steady_clock::now() < limit)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(findWindow(), nullptr);
    EXPECT_NE(Log().find("Sign in at"), std::string::npos) << Log();
    int result = -1;
    EXPECT_EQ(client.Logout(result, TALIX_LOGOUT_DEFAULT), IdNotLoggedIn);
    EXPECT_EQ(waiting.get(), IdLoginCancelled);
}

TEST_F(SignInTest, TheProxyThatTheHostSetsIsUsed)
{
    EXPECT_EQ(client.OverrideBackoffConfig(1, 1, 1, 0, 0), ::IdSuccess);
    char host[] = "127.0.0.1";
    talix_proxy_info proxy{};
    proxy.host = host;
    proxy.host_size = sizeof host - 1;
    proxy.port = 9; // Where nobody listens.
    EXPECT_EQ(client.SetProxyInfo(&proxy), ::IdSuccess);
    EXPECT_EQ(LogIn(), IdProviderUnreachable);
    EXPECT_EQ(client.ClearProxyInfo(), ::IdSuccess);
    EXPECT_EQ(LogIn(), ::IdSuccess) << Log();
    client.OverrideBackoffConfig(1, 60, 2, 5, 1);
}

TEST_F(SignInTest, ALoginThatNobodyFinishesTimesOut)
{
    Json::Value changes;
    changes["timeouts"]["signInSeconds"] = 10;
    Configure(changes);
    Browse("neverAnswers");
    EXPECT_EQ(LogIn(), IdLoginTimedOut);
    EXPECT_EQ(TakeEvents(), (std::vector<std::string>{"Other"}));
}

TEST_F(SignInTest, ThePortsAndTheHostOfTheRedirectAreTheConfiguredOnes)
{
    for (const char* const host : {"127.0.0.1", "localhost", "[::1]"})
    {
        module.Uninitialize();
        servers.QuitSSOServerProcess(Limit);
        Json::Value changes;
        changes["redirectHost"] = host;
        Configure(changes);
        EXPECT_EQ(LogIn(), ::IdSuccess) << host << Log();
        EndGrant();
    }
}

TEST_F(SignInTest, AUserSignsInWithAnotherDevice)
{
    Json::Value changes;
    changes["signIn"] = "device";
    Configure(changes);
    std::future<IdErrorCode> waiting = std::async(std::launch::async, [&] { return LogIn(); });
    const auto limit = std::chrono::steady_clock::now() + OrlindexTest::Patience;
    std::string userCode;
    while (userCode.empty() && std::chrono::steady_clock::now() < limit)
    {
        const std::string log = Log();
        const std::size_t line = log.rfind("/device with the code ");
        if (line != std::string::npos && Requests("device") > 0)
        {
            const std::size_t begin = line + std::string("/device with the code ").size();
            userCode = log.substr(begin, log.find_first_of("\r\n", begin) - begin);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    ASSERT_FALSE(userCode.empty()) << Log();
    Json::Value settings = *ReadJsonObject(ContentsOf(Folder() + L"\\browser.json"));
    settings["userCode"] = userCode;
    Write(Folder() + L"\\browser.json", WriteJson(settings));
    // The other device is a browser of this machine.
    ShellExecuteW(nullptr, L"open", Widen(Variable("OPENID_ISSUER") + "/device").c_str(), nullptr, nullptr, SW_SHOW);
    EXPECT_EQ(waiting.get(), ::IdSuccess) << Log();
    EXPECT_EQ(Profile(::IdSuccess)["userName"], "sam");
    EXPECT_EQ(client.RefreshOAuth2Token(false), ::IdSuccess) << Log();
}

TEST_F(SignInTest, AWrongConfigurationNeverLeadsToSimulatedUsers)
{
    WriteConfig("{ \"servers\": { \"production\": { \"isuer\": \"https://a.example\" } } }");
    EXPECT_EQ(LogIn(), IdProviderConfigInvalid);
    EXPECT_NE(Log().find("isuer"), std::string::npos) << Log();
    EXPECT_FALSE(client.IsLoggedIn());
}

TEST_F(SignInTest, AServerWithoutAProviderHasACodeOfItsOwn)
{
    client.SetServer(TALIX_SERVER_STAGING);
    ProductConfig product;
    product.SetOAuth2ClientID("example-host");
    client.SetProductConfig(TALIX_SERVER_STAGING, product);
    EXPECT_EQ(LogIn(), IdProviderConfigInvalid);
    EXPECT_NE(Log().find("a provider for the server staging"), std::string::npos);
}

TEST_F(SignInTest, AProviderThatCannotBeReachedHasACodeOfItsOwn)
{
    EXPECT_EQ(IdentityServices::IdErrorCode(client.OverrideBackoffConfig(1, 1, 1, 0, 0)), ::IdSuccess);
    Configure({}, "https://localhost:9");
    EXPECT_EQ(LogIn(), IdProviderUnreachable);
    client.OverrideBackoffConfig(1, 60, 2, 5, 1);
}

TEST_F(SignInTest, TheEmbeddedModeAndWhatNoStandardHasAreNotOffered)
{
    EXPECT_EQ(client.SetLoginMode(TALIX_LOGIN_MODE_EMBEDDED), ::IdSuccess);
    EXPECT_EQ(LogIn(), IdLoginModeNotOffered);
    EXPECT_EQ(client.SetLoginMode(TALIX_LOGIN_MODE_BROWSER), ::IdSuccess);
    EXPECT_EQ(LogIn(), ::IdSuccess) << Log();
    wchar_t address[2048] = L"";
    EXPECT_EQ(client.GetSessionUri(L"https://example.com/", 0, address, 2048), IdFeatureNotOffered);
    EXPECT_EQ(client.AutomatedLogin(L"sam", L"any", false, nullptr), IdFeatureNotOffered);
}

TEST_F(SignInTest, AWrongClientIdIsReportedByTheProvider)
{
    Json::Value changes;
    changes["timeouts"]["signInSeconds"] = 10;
    Configure(changes);
    UseProduct("nobody");
    EXPECT_EQ(LogIn(), IdLoginTimedOut) << "the provider's page tells the user; no redirect comes";
}

/// The last test: it looks at what all others have left.
TEST_F(SignInTest, NoFileHoldsASecret)
{
    ASSERT_EQ(LogIn(), ::IdSuccess) << Log();
    const Json::Value secrets = Control("secrets")["values"];
    ASSERT_GE(secrets.size(), 5u);
    std::vector<std::filesystem::path> files{DefaultLogFile()};
    for (const auto& entry : std::filesystem::recursive_directory_iterator(SettingsFolder()))
        files.push_back(entry.path());
    for (const std::filesystem::path& file : files)
    {
        const std::string contents = ContentsOf(file);
        for (const Json::Value& secret : secrets)
            EXPECT_EQ(contents.find(secret.asString()), std::string::npos) << file;
    }
}

} // namespace

} // namespace Kestrany::Agent::OpenId

int main(int argc, char** argv)
{
    Kestrany::Agent::JoinOwnJob();
    Kestrany::Agent::UseOwnFolder();
    testing::InitGoogleTest(&argc, argv);
    const int result = RUN_ALL_TESTS();
    Kestrany::Agent::CleanUp();
    return result;
}
