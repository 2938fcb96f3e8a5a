// The logins that hosts share: storing before a change takes effect, and the tokens of each product.

#include <gtest/gtest.h>

#include "TestSession.h"
#include "identity/Json.h"

namespace Kestrany::Agent::Simulated {

namespace {

namespace Events = IdentityServices::IdServicesConsts;
using namespace std::chrono_literals;

std::string FromBase64Url(const std::string& text)
{
    static const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    std::string bytes;
    unsigned int pending = 0;
    int bits = 0;
    for (const char character : text)
    {
        pending = (pending << 6 | static_cast<unsigned int>(alphabet.find(character))) & 0xFFFFu;
        bits += 6;
        if (bits >= 8)
        {
            bits -= 8;
            bytes += static_cast<char>(pending >> bits & 0xFF);
        }
    }
    return bytes;
}

Json::Value Part(const std::string& token, int index)
{
    std::size_t start = 0;
    for (; index > 0; --index)
        start = token.find('.', start) + 1;
    return *ReadJsonObject(FromBase64Url(token.substr(start, token.find('.', start) - start)));
}

class LoginsTest : public testing::Test, protected TestSession
{
protected:
    Caller caller{TALIX_SERVER_PRODUCTION, "tests", "openid profile"};
    Caller other{TALIX_SERVER_PRODUCTION, "other", ""};

    std::string AccessToken(const Caller& of)
    {
        std::string token;
        EXPECT_EQ(logins.GetAccessToken(of, false, token), IdSuccess);
        return token;
    }
};

TEST_F(LoginsTest, AnAccessTokenHoldsItsClaims)
{
    LogIn();
    const std::string token = AccessToken(caller);
    const Json::Value header = Part(token, 0);
    EXPECT_EQ(header["alg"].asString(), "ES256");
    EXPECT_EQ(header["kid"].asString(), "test-key");
    const Json::Value claims = Part(token, 1);
    EXPECT_EQ(claims["iss"].asString(), "https://production.simulator.invalid");
    EXPECT_EQ(claims["aud"].asString(), "tests");
    EXPECT_EQ(claims["sub"].asString(), "1");
    EXPECT_EQ(claims["scope"].asString(), "openid profile");
    EXPECT_EQ(claims["iat"].asInt64(), 1'700'000'000);
    EXPECT_EQ(claims["exp"].asInt64(), 1'700'003'600);
    EXPECT_FALSE(claims["jti"].asString().empty());
    const std::string signedText = token.substr(0, token.rfind('.'));
    EXPECT_EQ(FromBase64Url(token.substr(token.rfind('.') + 1)), "signed " + signedText.substr(0, 57));
}

TEST_F(LoginsTest, AnIdTokenDescribesTheUser)
{
    scenario.users.front().displayName = "Ann Example";
    scenario.users.front().email = "ann@example.invalid";
    LogIn();
    std::string token;
    ASSERT_EQ(logins.GetIdToken(caller, token), IdSuccess);
    const Json::Value claims = Part(token, 1);
    EXPECT_EQ(claims["name"].asString(), "Ann Example");
    EXPECT_EQ(claims["email"].asString(), "ann@example.invalid");
    EXPECT_FALSE(claims.isMember("scope"));
    EXPECT_NE(claims["jti"], Part(AccessToken(caller), 1)["jti"]);
}

TEST_F(LoginsTest, EachProductHasItsOwnTokens)
{
    LogIn();
    EXPECT_EQ(Part(AccessToken(other), 1)["aud"].asString(), "other");
    EXPECT_EQ(Part(AccessToken(caller), 1)["aud"].asString(), "tests");
    const std::string before = AccessToken(other);
    ASSERT_EQ(logins.RefreshToken(caller, false), IdSuccess);
    EXPECT_EQ(AccessToken(other), before);
}

TEST_F(LoginsTest, ARefreshIsReportedToItsProductAlone)
{
    LogIn();
    AccessToken(other);
    events.Clear();
    ASSERT_EQ(logins.RefreshToken(other, false), IdSuccess);
    EXPECT_EQ(events.Size(), 0u) << "the session's product is another one";
    ASSERT_EQ(logins.RefreshToken(caller, false), IdSuccess);
    EXPECT_EQ(events.Size(), 1u);
}

TEST_F(LoginsTest, TokensOfTheOldestProductsAreDropped)
{
    LogIn();
    for (std::size_t index = 0; index < 2 * Logins::MaxClients; ++index)
        AccessToken({TALIX_SERVER_PRODUCTION, "client-" + std::to_string(index), ""});
    EXPECT_EQ(storage.records[TALIX_SERVER_PRODUCTION]->clients.size(), Logins::MaxClients);
}

TEST_F(LoginsTest, TextsThatFitNoTokenAreRefusedAndTheStatusIsAvailable)
{
    LogIn();
    caller.scope.assign(MaxProductText, 'x');
    std::string token;
    EXPECT_EQ(logins.GetAccessToken(caller, true, token), IdTextTooLong);
    LoginStatus status;
    EXPECT_EQ(logins.GetStatus(caller, status), IdSuccess);
    EXPECT_TRUE(status.loggedIn);
    EXPECT_TRUE(status.tokenExpired);
}

TEST_F(LoginsTest, TheLongestAccessTokenIsOneThatAHostCanFetch)
{
    LogIn();
    caller.clientId.assign(1000, 'c'); // The token holds it twice.
    std::string token;
    std::size_t longest = 0;
    for (caller.scope.assign(1, 's'); logins.GetAccessToken(caller, true, token) == IdSuccess; caller.scope += 's')
        longest = token.size();
    EXPECT_EQ(logins.GetAccessToken(caller, true, token), IdTextTooLong);
    // Three bytes of the claims become four characters.
    EXPECT_LE(longest, MaxToken);
    EXPECT_GT(longest, MaxToken - 3);
    auto detail = LoginDetail::LoggedIn;
    ASSERT_EQ(logins.Logout(caller), IdSuccess);
    EXPECT_EQ(logins.Login(caller, detail), IdTextTooLong);
    EXPECT_EQ(detail, LoginDetail::NotLoggedIn);
}

TEST_F(LoginsTest, AUserWhoseTextsFitNoIdTokenCanSignIn)
{
    Account& ann = scenario.users.front();
    std::string token;
    std::size_t longest = 0;
    IdErrorCode code = IdSuccess;
    for (ann.displayName.assign(2600, 'x'); code == IdSuccess && ann.displayName.size() < MaxToken;
         ann.displayName += 'x')
    {
        LogIn();
        code = logins.GetIdToken(caller, token);
        if (code == IdSuccess)
            longest = token.size();
        EXPECT_FALSE(AccessToken(caller).empty());
        ASSERT_EQ(logins.Logout(caller), IdSuccess);
    }
    EXPECT_EQ(code, IdTextTooLong);
    EXPECT_LE(longest, MaxToken);
    EXPECT_GT(longest, MaxToken - 3);
}

TEST_F(LoginsTest, AChangeThatCannotBeStoredHasNoEffect)
{
    storage.fails = true;
    auto detail = LoginDetail::LoggedIn;
    EXPECT_EQ(logins.Login(caller, detail), IdNotStored);
    EXPECT_EQ(detail, LoginDetail::NotLoggedIn);
    EXPECT_FALSE(session.IsLoggedIn());
    storage.fails = false;
    LogIn();
    const std::string before = AccessToken(caller);
    storage.fails = true;
    EXPECT_EQ(logins.RefreshToken(caller, false), IdNotStored);
    EXPECT_EQ(AccessToken(caller), before);
    EXPECT_EQ(logins.Logout(caller), IdNotStored);
    EXPECT_TRUE(session.IsLoggedIn());
    EXPECT_EQ(events.Size(), 0u);
}

TEST_F(LoginsTest, ALoginReplacesAnotherCompletelyOrNotAtAll)
{
    ASSERT_EQ(logins.AutomatedLogin(caller, "ann", "a-secret", false), IdSuccess);
    TakeEvents();
    storage.fails = true;
    EXPECT_EQ(logins.AutomatedLogin(caller, "bob", "b-secret", true), IdNotStored);
    LoginStatus status;
    logins.GetStatus(caller, status);
    EXPECT_EQ(status.userName, "ann") << "stays signed in";
    caller.scope.assign(MaxProductText, 'x');
    storage.fails = false;
    EXPECT_EQ(logins.AutomatedLogin(caller, "bob", "b-secret", true), IdTextTooLong);
    EXPECT_TRUE(TakeEvents().empty());
    caller.scope.clear();
    EXPECT_EQ(logins.AutomatedLogin(caller, "bob", "b-secret", true), IdSuccess);
    EXPECT_EQ(TakeEvents(),
              (std::vector<Events::IdServicesEvent>{Events::LoggedOut, Events::LoggedIn, Events::TokenAvailable}));
}

TEST_F(LoginsTest, TokensOfAnotherKeyAreIssuedAnew)
{
    LogIn();
    const std::string before = AccessToken(caller);
    LoginParts parts = Parts();
    Logins same(scenario, parts, storage);
    same.RestoreAll();
    std::string token;
    ASSERT_EQ(same.GetAccessToken(caller, false, token), IdSuccess);
    EXPECT_EQ(token, before);
    parts.signer.keyId = "next-key";
    Logins next(scenario, parts, storage);
    next.RestoreAll();
    ASSERT_EQ(next.GetAccessToken(caller, false, token), IdSuccess);
    EXPECT_EQ(Part(token, 0)["kid"].asString(), "next-key");
    ASSERT_EQ(next.GetIdToken(caller, token), IdSuccess);
    EXPECT_EQ(Part(token, 0)["kid"].asString(), "next-key");
    EXPECT_EQ(storage.records[TALIX_SERVER_PRODUCTION]->clients.size(), 1u);
}

TEST_F(LoginsTest, EverythingThatWasReportedIsStored)
{
    LogIn();
    const auto& record = storage.records[TALIX_SERVER_PRODUCTION];
    const std::string token = AccessToken(caller);
    EXPECT_EQ(record->clients.back().access.text, token);
    now += 2h;
    std::string renewed;
    ASSERT_EQ(logins.GetAccessToken(caller, true, renewed), IdSuccess);
    EXPECT_NE(renewed, token);
    EXPECT_EQ(record->clients.back().access.text, renewed);
}

TEST_F(LoginsTest, TheScenarioDecidesWhatALoginDoes)
{
    auto detail = LoginDetail::LoggedIn;
    scenario.login = LoginBehavior::Refuse;
    EXPECT_EQ(logins.Login(caller, detail), IdLoginRefused);
    EXPECT_EQ(detail, LoginDetail::NotLoggedIn);
    scenario.login = LoginBehavior::Cancel;
    EXPECT_EQ(logins.Login(caller, detail), IdLoginCancelled);
    EXPECT_EQ(logins.AutomatedLogin(caller, "bob", "b-secret", false), IdSuccess) << "names its user";
    EXPECT_EQ(logins.Logout(caller), IdSuccess);
    scenario.login = LoginBehavior::Accept;
    scenario.loginUser = "bob";
    EXPECT_EQ(logins.Login(caller, detail), IdSuccess);
    Account account;
    EXPECT_EQ(logins.GetAccount(caller, account), IdSuccess);
    EXPECT_EQ(account.userName, "bob");
}

TEST_F(LoginsTest, TheProfileSaysThatTheUserIsSimulated)
{
    scenario.users.front().profile["source"] = "elsewhere";
    scenario.users.front().profile["team"] = "tests";
    LogIn();
    Account account;
    ASSERT_EQ(logins.GetAccount(caller, account), IdSuccess);
    EXPECT_EQ(account.profile["source"], "simulator");
    EXPECT_EQ(account.profile["team"], "tests");
}

TEST_F(LoginsTest, AnIdTokenThatIsNotOfferedIsRefused)
{
    LogIn();
    scenario.features.idToken = false;
    std::string token;
    EXPECT_EQ(logins.GetIdToken(caller, token), IdFeatureNotOffered);
}

} // namespace

} // namespace Kestrany::Agent::Simulated
