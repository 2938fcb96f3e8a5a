#include <gtest/gtest.h>

#include "TestSession.h"
#include "connection/RemoteLogins.h"

namespace Kestrany::Agent {

namespace {

namespace Events = IdentityServices::IdServicesConsts;
using Kinds = std::vector<Events::IdServicesEvent>;
using namespace std::chrono_literals;

class SessionTest : public testing::Test, protected TestSession
{
};

TEST_F(SessionTest, NobodyIsLoggedInAtFirst)
{
    Account account;
    std::string text;
    EXPECT_FALSE(session.IsLoggedIn());
    EXPECT_FALSE(session.IsLoginValid());
    EXPECT_FALSE(session.IsLoginExpired());
    EXPECT_FALSE(session.IsTokenAvailable());
    EXPECT_TRUE(session.IsTokenExpired());
    EXPECT_EQ(session.LoginExpiry(), 0u);
    EXPECT_EQ(session.TokenExpiry(), 0u);
    EXPECT_EQ(session.GetAccount(account), IdNotLoggedIn);
    EXPECT_EQ(session.GetAccessToken(text, true), IdNotLoggedIn);
    EXPECT_EQ(session.GetIdToken(text), IdNotLoggedIn);
    EXPECT_EQ(session.RefreshToken(false), IdNotLoggedIn);
    EXPECT_EQ(session.OpenAddress("https://a.example/", 0, text), IdNotLoggedIn);
    EXPECT_EQ(session.Logout(), IdNotLoggedIn);
    EXPECT_EQ(TakeEvents(), Kinds{});
}

TEST_F(SessionTest, LoginSignsTheFirstAccountIn)
{
    auto detail = LoginDetail::NotLoggedIn;
    EXPECT_EQ(session.Login(detail), IdSuccess);
    EXPECT_EQ(detail, LoginDetail::LoggedIn);
    Account account;
    EXPECT_EQ(session.GetAccount(account), IdSuccess);
    EXPECT_EQ(account.userName, "ann");
    EXPECT_TRUE(session.IsLoggedIn());
    EXPECT_TRUE(session.IsLoginValid());
    EXPECT_TRUE(session.IsTokenAvailable());
    EXPECT_EQ(TakeEvents(), (Kinds{Events::LoggedIn, Events::TokenAvailable}));
}

TEST_F(SessionTest, LoginOfTheSignedInUserChangesNothing)
{
    LogIn();
    auto detail = LoginDetail::NotLoggedIn;
    EXPECT_EQ(session.Login(detail), IdSuccess);
    EXPECT_EQ(detail, LoginDetail::AlreadyLoggedIn);
    EXPECT_EQ(TakeEvents(), Kinds{});
}

TEST_F(SessionTest, LoginNeedsTheProductOfTheServerInUse)
{
    session.SetServer(TALIX_SERVER_STAGING);
    auto detail = LoginDetail::LoggedIn;
    EXPECT_EQ(session.Login(detail), IdNoProductConfig);
    EXPECT_EQ(detail, LoginDetail::NotLoggedIn);
    EXPECT_EQ(session.Login("ann", "a-secret", false), IdNoProductConfig);
    EXPECT_FALSE(session.IsLoggedIn());
}

TEST_F(SessionTest, ExpiryDatesComeFromTheClock)
{
    LogIn();
    EXPECT_EQ(session.TokenExpiry(), 1'700'000'000u + 3600u);
    EXPECT_EQ(session.LoginExpiry(), 1'700'000'000u + 14u * 24u * 3600u);
}

TEST_F(SessionTest, TokenExpiresAtTheEndOfItsHourNotBefore)
{
    LogIn();
    std::string token;
    now += 1h - 1s;
    EXPECT_FALSE(session.IsTokenExpired());
    EXPECT_EQ(session.GetAccessToken(token, false), IdSuccess);
    now += 1s;
    EXPECT_TRUE(session.IsTokenExpired());
    EXPECT_FALSE(session.IsTokenAvailable());
    EXPECT_EQ(session.GetAccessToken(token, false), IdTokenExpired);
    EXPECT_EQ(session.GetIdToken(token), IdTokenExpired);
    EXPECT_TRUE(session.IsLoginValid());
}

TEST_F(SessionTest, WaitingForAnExpiredTokenRenewsIt)
{
    LogIn();
    std::string first;
    std::string second;
    session.GetAccessToken(first, false);
    now += 2h;
    EXPECT_EQ(session.GetAccessToken(second, true), IdSuccess);
    EXPECT_NE(first, second);
    EXPECT_EQ(session.TokenExpiry(), 1'700'000'000u + 3u * 3600u);
    EXPECT_EQ(TakeEvents(), Kinds{Events::TokenRefreshed});
}

TEST_F(SessionTest, WaitingForAGoodTokenLeavesIt)
{
    LogIn();
    std::string first;
    std::string second;
    session.GetAccessToken(first, false);
    session.GetAccessToken(second, true);
    EXPECT_EQ(first, second);
    EXPECT_EQ(TakeEvents(), Kinds{});
}

TEST_F(SessionTest, RefreshReplacesBothTokens)
{
    LogIn();
    std::string access[2];
    std::string id[2];
    session.GetAccessToken(access[0], false);
    session.GetIdToken(id[0]);
    EXPECT_EQ(session.RefreshToken(false), IdSuccess);
    session.GetAccessToken(access[1], false);
    session.GetIdToken(id[1]);
    EXPECT_NE(access[0], access[1]);
    EXPECT_NE(id[0], id[1]);
    EXPECT_EQ(TakeEvents(), Kinds{Events::TokenRefreshed});
}

TEST_F(SessionTest, RefreshOfExpiredTokensOnlyLeavesGoodOnes)
{
    LogIn();
    EXPECT_EQ(session.RefreshToken(true), IdSuccess);
    EXPECT_EQ(TakeEvents(), Kinds{});
    now += 1h;
    EXPECT_EQ(session.RefreshToken(true), IdSuccess);
    EXPECT_EQ(TakeEvents(), Kinds{Events::TokenRefreshed});
}

TEST_F(SessionTest, AnExpiredLoginHasNoTokensUntilTheNextLogin)
{
    LogIn();
    now += scenario.loginLifetime;
    std::string text;
    EXPECT_TRUE(session.IsLoggedIn());
    EXPECT_TRUE(session.IsLoginExpired());
    EXPECT_FALSE(session.IsLoginValid());
    EXPECT_EQ(session.GetAccessToken(text, true), IdLoginExpired);
    EXPECT_EQ(session.RefreshToken(false), IdLoginExpired);
    EXPECT_EQ(session.OpenAddress("https://a.example/", 0, text), IdLoginExpired);
    auto detail = LoginDetail::NotLoggedIn;
    EXPECT_EQ(session.Login(detail), IdSuccess);
    EXPECT_EQ(detail, LoginDetail::LoggedIn);
    EXPECT_TRUE(session.IsLoginValid());
}

TEST_F(SessionTest, AutomatedLoginChecksNameAndSecret)
{
    EXPECT_EQ(session.Login("ann", "b-secret", false), IdCredentialsRefused);
    EXPECT_EQ(session.Login("nobody", "a-secret", false), IdCredentialsRefused);
    EXPECT_FALSE(session.IsLoggedIn());
    EXPECT_EQ(session.Login("bob", "b-secret", false), IdSuccess);
    Account account;
    session.GetAccount(account);
    EXPECT_EQ(account.userId, "2");
}

TEST_F(SessionTest, AutomatedLoginReplacesAnotherUserOnlyOnRequest)
{
    LogIn();
    Account account;
    EXPECT_EQ(session.Login("bob", "b-secret", false), IdAlreadyLoggedIn);
    session.GetAccount(account);
    EXPECT_EQ(account.userName, "ann");
    EXPECT_EQ(TakeEvents(), Kinds{});
    EXPECT_EQ(session.Login("bob", "b-secret", true), IdSuccess);
    session.GetAccount(account);
    EXPECT_EQ(account.userName, "bob");
    EXPECT_EQ(TakeEvents(), (Kinds{Events::LoggedOut, Events::LoggedIn, Events::TokenAvailable}));
}

TEST_F(SessionTest, LogoutEndsTheLogin)
{
    LogIn();
    EXPECT_EQ(session.Logout(), IdSuccess);
    EXPECT_FALSE(session.IsLoggedIn());
    EXPECT_EQ(session.TokenExpiry(), 0u);
    EXPECT_EQ(TakeEvents(), Kinds{Events::LoggedOut});
}

TEST_F(SessionTest, EachServerHasItsOwnLogin)
{
    LogIn();
    EXPECT_EQ(session.SetServer(TALIX_SERVER_DEVELOPMENT), IdSuccess);
    EXPECT_FALSE(session.IsLoggedIn());
    EXPECT_EQ(session.SetServer(TALIX_SERVER_PRODUCTION), IdSuccess);
    EXPECT_TRUE(session.IsLoggedIn());
}

TEST_F(SessionTest, AChangeOfServerIsAnEventThatNamesIt)
{
    EXPECT_EQ(session.SetServer(TALIX_SERVER_STAGING), IdSuccess);
    const auto event = events.Pop();
    ASSERT_TRUE(event);
    EXPECT_EQ(event->kind, Events::ServerChanged);
    EXPECT_EQ(event->server, TALIX_SERVER_STAGING);
    EXPECT_EQ(session.SetServer(TALIX_SERVER_STAGING), IdSuccess);
    EXPECT_EQ(events.Size(), 0u);
}

TEST_F(SessionTest, UnknownServersAreRefused)
{
    ProductSettings product;
    product.clientId = "tests";
    for (const int number : {-1, 3, 2147483647})
    {
        const auto server = static_cast<Server>(number);
        EXPECT_EQ(session.SetServer(server), IdUnknownServer) << number;
        EXPECT_EQ(session.SetProduct(server, product), IdUnknownServer) << number;
        EXPECT_EQ(session.GetProduct(server, product), IdUnknownServer) << number;
    }
    EXPECT_EQ(session.GetServer(), TALIX_SERVER_PRODUCTION);
}

TEST_F(SessionTest, EachServerHasItsOwnProduct)
{
    ProductSettings product;
    EXPECT_EQ(session.GetProduct(TALIX_SERVER_STAGING, product), IdNoProductConfig);
    EXPECT_EQ(session.SetProduct(TALIX_SERVER_STAGING, product), IdInvalidClientId);
    product.clientId = "staged";
    product.buildId = "7";
    EXPECT_EQ(session.SetProduct(TALIX_SERVER_STAGING, product), IdSuccess);
    ProductSettings read;
    EXPECT_EQ(session.GetProduct(TALIX_SERVER_STAGING, read), IdSuccess);
    EXPECT_EQ(read.clientId, "staged");
    EXPECT_EQ(read.buildId, "7");
    EXPECT_EQ(session.GetProduct(TALIX_SERVER_PRODUCTION, read), IdSuccess);
    EXPECT_EQ(read.clientId, "tests");
}

TEST_F(SessionTest, UnknownLoginModesAreRefused)
{
    EXPECT_EQ(session.SetLoginMode(TALIX_LOGIN_MODE_BROWSER), IdSuccess);
    EXPECT_EQ(session.SetLoginMode(static_cast<talix_login_mode>(3)), IdInvalidLoginMode);
    EXPECT_EQ(session.SetLoginMode(static_cast<talix_login_mode>(-1)), IdInvalidLoginMode);
    EXPECT_EQ(session.GetLoginMode(), TALIX_LOGIN_MODE_BROWSER);
}

TEST_F(SessionTest, AStoredLoginIsRestored)
{
    EXPECT_EQ(session.Restore(false), IdNotLoggedIn);
    EXPECT_EQ(TakeEvents(), Kinds{});
    LogIn();
    EXPECT_EQ(session.Restore(true), IdSuccess);
    EXPECT_EQ(TakeEvents(), Kinds{Events::LoginRestored});
    now += scenario.loginLifetime;
    EXPECT_EQ(session.Restore(true), IdLoginExpired);
    EXPECT_EQ(TakeEvents(), Kinds{});
}

TEST_F(SessionTest, EachSessionAddressHasItsOwnTicket)
{
    LogIn();
    std::string first;
    std::string second;
    EXPECT_EQ(session.OpenAddress("https://shop.example/a b?c=d&e", 7, first), IdSuccess);
    EXPECT_EQ(session.OpenAddress("https://shop.example/a b?c=d&e", 7, second), IdSuccess);
    EXPECT_NE(first, second);
    EXPECT_EQ(first.rfind("https://production.simulator.invalid/session?ticket=", 0), 0u) << first;
    EXPECT_NE(first.find("&flag=7&target=https%3A%2F%2Fshop.example%2Fa%20b%3Fc%3Dd%26e"), std::string::npos) << first;
}

TEST_F(SessionTest, SessionAddressNeedsAWebAddress)
{
    LogIn();
    std::string address = "untouched";
    EXPECT_EQ(session.OpenAddress("file:///c:/secret", 0, address), IdInvalidAddress);
    EXPECT_EQ(address, "untouched");
}

TEST(SessionTestWithoutService, TheCodeOfAFailedStatusIsReturned)
{
    RemoteLogins logins([](const Request&) {
        Response response;
        response.code = IdServerUnavailable;
        return response;
    });
    EventQueue events;
    const Session session(logins, events);
    EXPECT_EQ(session.CheckLoggedIn(), IdServerUnavailable);
    EXPECT_FALSE(session.IsLoggedIn());
}

/// Keeps the caller of the last call.
class RecordingLogins final : public LoginService
{
public:
    IdErrorCode Login(const Caller& caller, LoginDetail&) override
    {
        last = caller;
        return IdSuccess;
    }
    IdErrorCode AutomatedLogin(const Caller&, const std::string&, const std::string&, bool) override
    {
        return IdFailed;
    }
    IdErrorCode Logout(const Caller&) override { return IdFailed; }
    IdErrorCode CancelLogin(const Caller&) override { return IdFailed; }
    IdErrorCode GetStatus(const Caller&, LoginStatus&) override { return IdFailed; }
    IdErrorCode GetAccount(const Caller&, Account&) override { return IdFailed; }
    IdErrorCode GetAccessToken(const Caller&, bool, std::string&) override { return IdFailed; }
    IdErrorCode GetIdToken(const Caller&, std::string&) override { return IdFailed; }
    IdErrorCode RefreshToken(const Caller&, bool) override { return IdFailed; }
    IdErrorCode OpenAddress(const Caller&, const std::string&, std::uint16_t, std::string&) override
    {
        return IdFailed;
    }
    IdErrorCode Restore(const Caller&, bool) override { return IdFailed; }

    Caller last;
};

TEST(SessionCallerTest, TheHostsSettingsGoWithItsCalls)
{
    RecordingLogins logins;
    EventQueue events;
    Session session(logins, events);
    LoginDetail detail{};
    session.Login(detail);
    EXPECT_EQ(logins.last.loginMode, TALIX_LOGIN_MODE_DEFAULT);
    EXPECT_FALSE(logins.last.proxy);
    EXPECT_FALSE(logins.last.backoff);
    session.SetLoginMode(TALIX_LOGIN_MODE_BROWSER);
    session.SetProxy(ProxySettings{"proxy.example.com", "", "", 8080});
    session.SetBackoff(BackoffSettings{2, 30, 3, 4, 5});
    session.Login(detail);
    EXPECT_EQ(logins.last.loginMode, TALIX_LOGIN_MODE_BROWSER);
    ASSERT_TRUE(logins.last.proxy && logins.last.backoff);
    EXPECT_EQ(logins.last.proxy->port, 8080);
    EXPECT_EQ(logins.last.backoff->maxRetries, 4);
    session.SetProxy(std::nullopt);
    session.Login(detail);
    EXPECT_FALSE(logins.last.proxy);
}

} // namespace

} // namespace Kestrany::Agent
