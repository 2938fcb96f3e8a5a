// The requests of a whole life of tokens, at a provider within the process.

#include <gtest/gtest.h>

#include "TestProvider.h"
#include "identity/openid/Url.h"

namespace Kestrany::Agent::OpenId {

namespace {

constexpr std::int64_t Until = 1'000'000'000;

class ProviderTest : public testing::Test
{
protected:
    static const Grant& Granted(const Outcome<Grant>& outcome)
    {
        EXPECT_EQ(FailureOf(outcome), nullptr) << LogLine(*FailureOf(outcome));
        return ResultOf(outcome);
    }

    RefreshRequest Refreshing()
    {
        return {TestProvider::ClientId, token, "user-1", "nonce-1", [this](const Secret& kept) {
                    kept_.push_back(std::string(kept.View()));
                    requestsBeforeKeeping_ = provider.requested.size();
                    return storeWorks;
                }};
    }

    Outcome<BrowserSignIn> Begin()
    {
        return provider.Agent().BeginSignIn(TestProvider::ClientId, "profile", "http://[::1]:4000/callback", Until);
    }

    TestProvider provider;
    const Secret token{"refresh-0"};
    bool storeWorks = true;
    std::vector<std::string> kept_;
    std::size_t requestsBeforeKeeping_ = 0;
};

using Names = std::vector<std::string>;

TEST_F(ProviderTest, AFirstSignInRequestsDiscoveryKeysAndTokensAndASecondOneTokensAlone)
{
    EXPECT_EQ(Granted(provider.SignIn()).accessToken.View(), "access-1");
    EXPECT_EQ(provider.requested, (Names{"/.well-known/openid-configuration", "/token", "/keys"}));
    provider.requested.clear();
    Granted(provider.SignIn());
    EXPECT_EQ(provider.requested, (Names{"/token"}));
}

TEST_F(ProviderTest, TheMetadataAreRequestedAgainAfterADay)
{
    Granted(provider.SignIn());
    provider.requested.clear();
    provider.ticks += 24 * 3600 * 1000;
    Granted(provider.SignIn());
    EXPECT_EQ(provider.requested.front(), "/.well-known/openid-configuration");
}

TEST_F(ProviderTest, TheAuthorizationRequestHasWhatTheStandardsAskFor)
{
    provider.config.additionalParameters = {{"audience", "https://api.example.com/a b"}};
    provider.NewAgent();
    const Outcome<BrowserSignIn> begun = Begin();
    ASSERT_EQ(FailureOf(begun), nullptr);
    const std::string address(ResultOf(begun).address.View());
    const std::string prefix = "https://login.example.com/authorize?";
    ASSERT_EQ(address.substr(0, prefix.size()), prefix);
    std::map<std::string, std::string> form;
    const auto parameters = ParseForm(std::string_view(address).substr(prefix.size()));
    ASSERT_TRUE(parameters);
    for (const auto& [name, value] : *parameters)
        form[name] = value;
    EXPECT_EQ(form.size(), 9u);
    EXPECT_EQ(form["response_type"], "code");
    EXPECT_EQ(form["client_id"], "client");
    EXPECT_EQ(form["redirect_uri"], "http://[::1]:4000/callback");
    EXPECT_EQ(form["scope"], "openid profile");
    EXPECT_EQ(form["code_challenge_method"], "S256");
    EXPECT_EQ(form["audience"], "https://api.example.com/a b");
    for (const char* const name : {"state", "nonce", "code_challenge"})
        EXPECT_EQ(form[name].size(), 43u) << name;
    EXPECT_NE(form["state"], form["nonce"]);
    EXPECT_EQ(address.find(std::string(ResultOf(begun).secrets.verifier.View())), std::string::npos);
}

TEST_F(ProviderTest, EachSignInHasValuesOfItsOwn)
{
    const Outcome<BrowserSignIn> one = Begin();
    const Outcome<BrowserSignIn> other = Begin();
    EXPECT_NE(ResultOf(one).secrets.state.View(), ResultOf(other).secrets.state.View());
    EXPECT_NE(ResultOf(one).secrets.verifier.View(), ResultOf(other).secrets.verifier.View());
    EXPECT_NE(ResultOf(one).secrets.nonce, ResultOf(other).secrets.nonce);
}

TEST_F(ProviderTest, TheTokenRequestHasTheVerifierAndTheRedirectAddress)
{
    const Outcome<BrowserSignIn> begun = Begin();
    EXPECT_NE(FailureOf(provider.Agent().Redeem(ResultOf(begun), Secret("the code"), Until)), nullptr);
    const TestProvider::Form expected = {{"grant_type", "authorization_code"},
                                         {"code", "the code"},
                                         {"redirect_uri", "http://[::1]:4000/callback"},
                                         {"client_id", "client"},
                                         {"code_verifier", std::string(ResultOf(begun).secrets.verifier.View())}};
    EXPECT_EQ(provider.forms.back(), expected);
}

TEST_F(ProviderTest, ACodeOfAnotherSignInIsRefusedByItsNonce)
{
    // Code injection: the code is good, but belongs to another request.
    Granted(provider.SignIn());
    const Outcome<BrowserSignIn> victim = Begin();
    const Outcome<Grant> outcome = provider.Agent().Redeem(ResultOf(victim), Secret("code-1"), Until);
    ASSERT_NE(FailureOf(outcome), nullptr);
    EXPECT_EQ(FailureOf(outcome)->code, IdIdTokenRefused);
    EXPECT_EQ(FailureOf(outcome)->expected, "the nonce of the request");
}

TEST_F(ProviderTest, ARequiredPushedRequestKeepsTheParametersOutOfTheAddress)
{
    provider.metadata["require_pushed_authorization_requests"] = true;
    provider.hooks["/par"] = [](const HttpRequest&) {
        Json::Value reply(Json::objectValue);
        reply["request_uri"] = "urn:example:1";
        reply["expires_in"] = 60;
        return JsonReply(reply, 201);
    };
    const Outcome<BrowserSignIn> begun = Begin();
    ASSERT_EQ(FailureOf(begun), nullptr) << LogLine(*FailureOf(begun));
    EXPECT_EQ(ResultOf(begun).address.View(),
              "https://login.example.com/authorize?client_id=client&request_uri=urn%3Aexample%3A1");
    EXPECT_EQ(provider.forms.back()["redirect_uri"], "http://[::1]:4000/callback");
}

TEST_F(ProviderTest, ARefusedPushedRequestHasItsOwnCode)
{
    provider.metadata["require_pushed_authorization_requests"] = true;
    for (const auto& [reply, code] : std::vector<std::pair<std::function<HttpReply()>, IdErrorCode>>{
             {[] { return TextReply(R"({"error":"invalid_redirect_uri"})", "application/json", 400); },
              IdPushedRequestRefused},
             {[] { return TextReply("<html>", "text/html", 201); }, IdPushedRequestRefused},
             {[] { return TextReply("{}", "application/json", 201); }, IdPushedRequestRefused},
             {[] { return TextReply("", "", 500); }, IdProviderFailed},
             {[] { return ProblemReply(HttpProblem::TlsRefused); }, IdTlsRefused}})
    {
        provider.hooks["/par"] = [make = reply](const HttpRequest&) { return make(); };
        const Outcome<BrowserSignIn> begun = Begin();
        ASSERT_NE(FailureOf(begun), nullptr);
        EXPECT_EQ(FailureOf(begun)->code, code) << LogLine(*FailureOf(begun));
    }
}

TEST_F(ProviderTest, KeysThatRotateBetweenTwoSignInsAreRequestedOnce)
{
    Granted(provider.SignIn());
    provider.key = &P384TestKey();
    provider.algorithm = "ES384";
    provider.header["alg"] = "ES384";
    provider.header["kid"] = "two";
    provider.keys["keys"][0] = KeyAsJson(P384TestKey(), "two");
    provider.requested.clear();
    Granted(provider.SignIn());
    EXPECT_EQ(provider.requested, (Names{"/token", "/keys"}));
}

TEST_F(ProviderTest, KeysThatRotateUnderTheSameNameAreRequestedOnce)
{
    Granted(provider.SignIn());
    provider.key = &OtherP256TestKey();
    provider.keys["keys"][0] = KeyAsJson(OtherP256TestKey(), "one");
    provider.requested.clear();
    Granted(provider.SignIn());
    EXPECT_EQ(provider.requested, (Names{"/token", "/keys"}));
}

TEST_F(ProviderTest, KeysAreNotRequestedUntilOneFits)
{
    Granted(provider.SignIn());
    provider.header["kid"] = "unknown";
    provider.requested.clear();
    EXPECT_NE(FailureOf(provider.SignIn()), nullptr);
    EXPECT_EQ(provider.requested, (Names{"/token", "/keys"}));
}

TEST_F(ProviderTest, AnIssuerOnThisMachineMayUseHttpIfAllowed)
{
    const std::string issuer = "http://localhost:3000";
    provider.config.issuer = issuer;
    for (const char* const name : {"authorization_endpoint", "token_endpoint", "jwks_uri"})
    {
        const std::string address = provider.metadata[name].asString();
        provider.metadata[name] = issuer + address.substr(std::string(TestProvider::Issuer).size());
    }
    provider.metadata["issuer"] = issuer;
    provider.claims["iss"] = issuer;
    provider.NewAgent();
    EXPECT_EQ(FailureOf(provider.SignIn())->code, IdDiscoveryMalformed);
    provider.config.allowInsecureLoopback = true;
    provider.NewAgent();
    Granted(provider.SignIn());
    provider.metadata["token_endpoint"] = "http://login.example.com/token";
    provider.NewAgent();
    EXPECT_EQ(FailureOf(provider.SignIn())->code, IdDiscoveryMalformed);
}

TEST_F(ProviderTest, PkceThatIsNotListedIsAssumedOnlyIfTheConfigurationSaysSo)
{
    provider.config.assumePkce = true;
    provider.NewAgent();
    provider.metadata["code_challenge_methods_supported"] = Json::Value(Json::arrayValue);
    EXPECT_EQ(FailureOf(provider.SignIn())->code, IdPkceNotOffered) << "it is listed, without S256";
    provider.metadata.removeMember("code_challenge_methods_supported");
    Granted(provider.SignIn());
}

// --- Refresh --------------------------------------------------------------------------------------------------------

TEST_F(ProviderTest, ARefreshPresentsTheTokenAndTheClient)
{
    provider.tokens["id_token"] = Json::nullValue;
    const Outcome<Grant> outcome = provider.Agent().Refresh(Refreshing(), Until);
    EXPECT_EQ(Granted(outcome).accessToken.View(), "access-1");
    EXPECT_TRUE(ResultOf(outcome).idToken.IsEmpty());
    EXPECT_EQ(ResultOf(outcome).accessExpiry, TimePoint(std::chrono::seconds(TestProvider::Now + 300)));
    const TestProvider::Form expected = {
        {"grant_type", "refresh_token"}, {"refresh_token", "refresh-0"}, {"client_id", "client"}};
    EXPECT_EQ(provider.forms.back(), expected);
}

TEST_F(ProviderTest, ANewRefreshTokenIsKeptBeforeAnyOtherRequest)
{
    provider.claims["nonce"] = Json::nullValue;
    const Outcome<Grant> outcome = provider.Agent().Refresh(Refreshing(), Until);
    Granted(outcome);
    EXPECT_EQ(kept_, (Names{"refresh-1"}));
    EXPECT_EQ(requestsBeforeKeeping_, 2u) << "discovery and tokens; the keys come later";
    EXPECT_EQ(provider.requested.back(), "/keys");
}

TEST_F(ProviderTest, ANewRefreshTokenThatCannotBeKeptMakesTheRefreshFail)
{
    storeWorks = false;
    const Outcome<Grant> outcome = provider.Agent().Refresh(Refreshing(), Until);
    ASSERT_NE(FailureOf(outcome), nullptr);
    EXPECT_EQ(FailureOf(outcome)->code, IdNotStored);
}

TEST_F(ProviderTest, WithoutANewRefreshTokenTheEarlierOneStays)
{
    provider.tokens["id_token"] = Json::nullValue;
    provider.tokens["refresh_token"] = Json::nullValue;
    provider.tokens["expires_in"] = Json::nullValue;
    const Outcome<Grant> outcome = provider.Agent().Refresh(Refreshing(), Until);
    EXPECT_TRUE(Granted(outcome).refreshToken.IsEmpty());
    EXPECT_TRUE(kept_.empty());
    EXPECT_EQ(ResultOf(outcome).accessExpiry, TimePoint(std::chrono::seconds(TestProvider::Now + 300)))
        << "it can be refreshed: the short lifetime is assumed";
}

TEST_F(ProviderTest, TheIdTokenOfARefreshIsVerified)
{
    struct Case
    {
        const char* claim;
        Json::Value value;
        IdErrorCode code;
    };
    for (const Case& each : std::vector<Case>{{"nonce", "nonce-1", IdSuccess},
                                              {"nonce", "nonce-2", IdIdTokenRefused},
                                              {"sub", "user-2", IdSubjectDiffers},
                                              {"iss", "https://other.example.com", IdIdTokenRefused},
                                              {"aud", "other", IdIdTokenRefused}})
    {
        TestProvider one;
        one.claims["nonce"] = Json::nullValue;
        one.claims[each.claim] = each.value;
        const Outcome<Grant> outcome = one.Agent().Refresh(Refreshing(), Until);
        const Failure* const failure = FailureOf(outcome);
        EXPECT_EQ(failure == nullptr ? IdSuccess : failure->code, each.code) << each.claim;
    }
    EXPECT_EQ(kept_.size(), 5u) << "the new refresh token is kept also if the ID token is refused";
}

TEST_F(ProviderTest, AGrantThatIsRefusedIsToldFromOtherErrors)
{
    struct Case
    {
        std::function<HttpReply()> reply;
        IdErrorCode code;
    };
    for (const Case& each : std::vector<Case>{
             {[] { return TextReply(R"({"error":"invalid_grant"})", "application/json", 400); }, IdGrantRefused},
             {[] { return TextReply(R"({"error":"invalid_client"})", "application/json", 401); }, IdTokenEndpointError},
             {[] { return TextReply("", "", 400); }, IdTokenEndpointError},
             {[] { return TextReply("<html>", "text/html", 400); }, IdTokenEndpointError},
             {[] { return TextReply(R"({"error":"invalid_grant"})", "application/json", 503); }, IdProviderFailed},
             {[] { return ProblemReply(HttpProblem::ConnectionLost); }, IdProviderUnreachable}})
    {
        provider.hooks["/token"] = [&](const HttpRequest&) { return each.reply(); };
        const Outcome<Grant> outcome = provider.Agent().Refresh(Refreshing(), Until);
        ASSERT_NE(FailureOf(outcome), nullptr);
        EXPECT_EQ(FailureOf(outcome)->code, each.code) << LogLine(*FailureOf(outcome));
        EXPECT_EQ(LogLine(*FailureOf(outcome)).find("refresh-0"), std::string::npos);
    }
}

// --- Retries --------------------------------------------------------------------------------------------------------

TEST_F(ProviderTest, AFailedDiscoveryIsRepeated)
{
    int failures = 2;
    provider.hooks["/.well-known/openid-configuration"] = [&](const HttpRequest&) -> std::optional<HttpReply> {
        return failures-- > 0 ? std::optional<HttpReply>(TextReply("", "", 502)) : std::nullopt;
    };
    Granted(provider.SignIn());
    EXPECT_EQ(provider.pauses.size(), 2u);
}

TEST_F(ProviderTest, ACodeIsNotPresentedAgainAfterALostAnswer)
{
    for (const HttpProblem problem : {HttpProblem::ConnectionLost, HttpProblem::TimedOut})
    {
        provider.forms.clear();
        provider.hooks["/token"] = [=](const HttpRequest&) { return ProblemReply(problem); };
        EXPECT_NE(FailureOf(provider.SignIn()), nullptr);
        EXPECT_EQ(provider.forms.size(), 1u);
    }
}

TEST_F(ProviderTest, ACodeIsPresentedAgainIfTheProviderHasNotSeenIt)
{
    int failures = 1;
    provider.hooks["/token"] = [&](const HttpRequest&) -> std::optional<HttpReply> {
        return failures-- > 0 ? std::optional<HttpReply>(ProblemReply(HttpProblem::NotConnected)) : std::nullopt;
    };
    Granted(provider.SignIn());
    EXPECT_EQ(provider.forms.size(), 2u);
}

TEST_F(ProviderTest, ARefreshIsRepeatedAfterALostAnswer)
{
    provider.tokens["id_token"] = Json::nullValue;
    int failures = 1;
    provider.hooks["/token"] = [&](const HttpRequest&) -> std::optional<HttpReply> {
        return failures-- > 0 ? std::optional<HttpReply>(ProblemReply(HttpProblem::ConnectionLost)) : std::nullopt;
    };
    Granted(provider.Agent().Refresh(Refreshing(), Until));
    EXPECT_EQ(provider.forms.size(), 2u);
}

TEST_F(ProviderTest, NoOperationLastsBeyondItsLimit)
{
    provider.NewAgent({std::chrono::seconds(1), std::chrono::seconds(60), 2, 1000, std::chrono::seconds(0)});
    std::vector<std::int64_t> limits;
    provider.hooks["/.well-known/openid-configuration"] = [&](const HttpRequest& request) {
        limits.push_back(request.limit.count());
        provider.ticks += request.limit.count();
        return ProblemReply(HttpProblem::TimedOut);
    };
    const std::int64_t until = provider.ticks + 25'000;
    const Outcome<Metadata> discovered = provider.Agent().Discover(until);
    ASSERT_NE(FailureOf(discovered), nullptr);
    EXPECT_EQ(FailureOf(discovered)->code, IdProviderUnreachable);
    EXPECT_LE(provider.ticks, until);
    EXPECT_EQ(limits, (std::vector<std::int64_t>{10'000, 10'000, 2'000}));
}

// --- Device grant, userinfo, sign-out -------------------------------------------------------------------------------

TEST_F(ProviderTest, ASignInWithAnotherDeviceNeedsNoNonce)
{
    provider.hooks["/device"] = [](const HttpRequest&) {
        return TextReply(R"({"device_code":"device-1","user_code":"ABCD-EFGH","expires_in":600,
                            "verification_uri":"https://login.example.com/enter"})",
                         "application/json");
    };
    const Outcome<DeviceAuthorization> device =
        provider.Agent().BeginDeviceSignIn(TestProvider::ClientId, "openid email", Until);
    ASSERT_EQ(FailureOf(device), nullptr) << LogLine(*FailureOf(device));
    EXPECT_EQ(provider.forms.back(), (TestProvider::Form{{"client_id", "client"}, {"scope", "openid email"}}));
    TokenOutcome outcome = provider.Agent().PollDevice(TestProvider::ClientId, ResultOf(device), Until);
    EXPECT_EQ(provider.forms.back()["device_code"], "device-1");
    ASSERT_NE(std::get_if<TokenReply>(&outcome), nullptr);
    const Outcome<Grant> grant =
        provider.Agent().AcceptDeviceTokens(TestProvider::ClientId, std::move(std::get<TokenReply>(outcome)), Until);
    EXPECT_EQ(Granted(grant).claims->subject, "user-1");
}

TEST_F(ProviderTest, TheDeviceGrantMustBeOffered)
{
    provider.metadata.removeMember("device_authorization_endpoint");
    const Outcome<DeviceAuthorization> device = provider.Agent().BeginDeviceSignIn(TestProvider::ClientId, "", Until);
    ASSERT_NE(FailureOf(device), nullptr);
    EXPECT_EQ(FailureOf(device)->code, IdDeviceGrantNotOffered);
}

TEST_F(ProviderTest, UserInfoIsAskedWithTheAccessToken)
{
    std::string bearer;
    provider.hooks["/userinfo"] = [&](const HttpRequest& request) -> std::optional<HttpReply> {
        bearer = request.bearer.View();
        return std::nullopt;
    };
    const Outcome<Json::Value> claims = provider.Agent().UserInfo(Secret("access-1"), "user-1", Until);
    ASSERT_EQ(FailureOf(claims), nullptr);
    EXPECT_EQ(ResultOf(claims)["email"].asString(), "ann@example.com");
    EXPECT_EQ(bearer, "access-1");
}

TEST_F(ProviderTest, WithoutAUserInfoEndpointThereAreNoFurtherClaims)
{
    provider.metadata.removeMember("userinfo_endpoint");
    const Outcome<Json::Value> claims = provider.Agent().UserInfo(Secret("access-1"), "user-1", Until);
    ASSERT_EQ(FailureOf(claims), nullptr);
    EXPECT_TRUE(ResultOf(claims).empty());
}

TEST_F(ProviderTest, ARefreshTokenIsRevoked)
{
    EXPECT_EQ(provider.Agent().Revoke(TestProvider::ClientId, token, "refresh_token", Until), std::nullopt);
    const TestProvider::Form expected = {
        {"token", "refresh-0"}, {"token_type_hint", "refresh_token"}, {"client_id", "client"}};
    EXPECT_EQ(provider.forms.back(), expected);
}

TEST_F(ProviderTest, ARevocationThatIsRefusedIsReported)
{
    // Some providers require a secret for it: the token stays valid.
    provider.hooks["/revoke"] = [](const HttpRequest&) { return TextReply("", "", 401); };
    const std::optional<Failure> failure =
        provider.Agent().Revoke(TestProvider::ClientId, token, "refresh_token", Until);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, IdTokenEndpointError);
    EXPECT_EQ(LogLine(*failure).find("refresh-0"), std::string::npos);
}

TEST_F(ProviderTest, TheLogoutPageGetsTheIdTokenAsAHint)
{
    const Secret idToken("a.b.c");
    const EndSessionRequest request{"client", &idToken, "http://127.0.0.1:4000/", "s"};
    EXPECT_EQ(provider.Agent().EndSession(request, Until).View(),
              "https://login.example.com/logout?id_token_hint=a.b.c&client_id=client"
              "&post_logout_redirect_uri=http%3A%2F%2F127.0.0.1%3A4000%2F&state=s");
    provider.metadata.removeMember("end_session_endpoint");
    provider.NewAgent();
    EXPECT_TRUE(provider.Agent().EndSession(request, Until).IsEmpty());
}

} // namespace

} // namespace Kestrany::Agent::OpenId
