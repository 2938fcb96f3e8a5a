#include <gtest/gtest.h>

#include "identity/openid/RedirectRequest.h"

namespace Kestrany::Agent::OpenId {

namespace {

using Kind = RedirectResult::Kind;

class RedirectRequestTest : public testing::Test
{
protected:
    RedirectResult Read(const std::string& target, const char* method = "GET") const
    {
        return ReadRedirect(method, target, expectation);
    }
    void ExpectFailure(const std::string& target, Kind kind, IdErrorCode code) const
    {
        const RedirectResult result = Read(target);
        EXPECT_EQ(result.kind, kind) << target;
        EXPECT_EQ(result.failure.code, code) << target;
        EXPECT_TRUE(result.code.IsEmpty()) << target;
    }

    RedirectExpectation expectation{"/callback", "state-1", "https://login.example.com", false};
};

TEST_F(RedirectRequestTest, TheCodeIsTaken)
{
    const RedirectResult result = Read("/callback?code=a%2Bb%2Fc&state=state-1");
    EXPECT_EQ(result.kind, Kind::Code);
    EXPECT_EQ(result.code.View(), "a+b/c");
    EXPECT_EQ(Read("/callback?session_state=x&state=state-1&code=a").kind, Kind::Code) << "further parameters";
}

TEST_F(RedirectRequestTest, AnotherPathIsNotTheRedirect)
{
    for (const char* const target : {"/", "/favicon.ico", "/callback/", "/callbackx?code=a&state=state-1", "",
                                     "callback?code=a&state=state-1", "//callback?code=a&state=state-1"})
        EXPECT_EQ(Read(target).kind, Kind::OtherPath) << target;
}

TEST_F(RedirectRequestTest, AWrongStateDoesNotDisturbTheSignIn)
{
    ExpectFailure("/callback?code=a&state=state-2", Kind::Ignored, IdStateWrong);
    ExpectFailure("/callback?code=a&state=state-1x", Kind::Ignored, IdStateWrong);
    ExpectFailure("/callback?code=a&state=", Kind::Ignored, IdStateWrong);
    ExpectFailure("/callback?code=a", Kind::Ignored, IdStateWrong);
    ExpectFailure("/callback", Kind::Ignored, IdStateWrong);
    ExpectFailure("/callback?error=access_denied", Kind::Ignored, IdStateWrong);
    ExpectFailure("/callback?state=state-2&state=state-1&code=a", Kind::Ignored, IdStateWrong);
}

TEST_F(RedirectRequestTest, AnEmptyStateFitsNothing)
{
    expectation.state = "";
    ExpectFailure("/callback?code=a&state=", Kind::Ignored, IdStateWrong);
    ExpectFailure("/callback?code=a", Kind::Ignored, IdStateWrong);
}

TEST_F(RedirectRequestTest, AMalformedRequestDoesNotDisturbTheSignIn)
{
    ExpectFailure("/callback?code=%ZZ&state=state-1", Kind::Ignored, IdRedirectMalformed);
    ExpectFailure("/callback?code=%FF&state=state-1", Kind::Ignored, IdRedirectMalformed);
    ExpectFailure("/callback?state=state-1&code=" + std::string(20'000, 'a'), Kind::Ignored, IdRedirectMalformed);
    EXPECT_EQ(Read("/callback?code=a&state=state-1", "POST").kind, Kind::Ignored);
    EXPECT_EQ(Read("/callback?code=a&state=state-1", "HEAD").kind, Kind::Ignored);
}

TEST_F(RedirectRequestTest, ARepeatedParameterEndsTheSignIn)
{
    ExpectFailure("/callback?code=a&code=b&state=state-1", Kind::Failed, IdRedirectMalformed);
    ExpectFailure("/callback?code=a&state=state-1&state=state-1", Kind::Failed, IdRedirectMalformed);
    ExpectFailure("/callback?code=a&state=state-1&iss=x&iss=https%3A%2F%2Flogin.example.com", Kind::Failed,
                  IdRedirectMalformed);
}

TEST_F(RedirectRequestTest, TheIssuerIsComparedWhereItIsSent)
{
    const std::string good = "/callback?code=a&state=state-1&iss=https%3A%2F%2Flogin.example.com";
    const std::string missing = "/callback?code=a&state=state-1";
    const std::string wrong = "/callback?code=a&state=state-1&iss=https%3A%2F%2Fevil.example.com";
    EXPECT_EQ(Read(good).kind, Kind::Code);
    EXPECT_EQ(Read(missing).kind, Kind::Code);
    ExpectFailure(wrong, Kind::Failed, IdRedirectOfOtherIssuer);
    ExpectFailure("/callback?error=access_denied&state=state-1&iss=https%3A%2F%2Fevil.example.com", Kind::Failed,
                  IdRedirectOfOtherIssuer);
    expectation.requiresIssuer = true;
    EXPECT_EQ(Read(good).kind, Kind::Code);
    ExpectFailure(missing, Kind::Failed, IdRedirectOfOtherIssuer);
    ExpectFailure(wrong, Kind::Failed, IdRedirectOfOtherIssuer);
}

TEST_F(RedirectRequestTest, AnErrorEndsTheSignIn)
{
    ExpectFailure("/callback?error=access_denied&state=state-1", Kind::Failed, IdSignInDenied);
    ExpectFailure("/callback?error=server_error&state=state-1", Kind::Failed, IdSignInFailedAtProvider);
    const RedirectResult result = Read("/callback?error=invalid_scope&error_description=no%0Asuch&state=state-1");
    EXPECT_EQ(result.failure.came, "the error \"invalid_scope\" with the text \"no?such\"");
}

TEST_F(RedirectRequestTest, ThereIsEitherACodeOrAnError)
{
    ExpectFailure("/callback?state=state-1", Kind::Failed, IdRedirectMalformed);
    ExpectFailure("/callback?code=a&error=b&state=state-1", Kind::Failed, IdRedirectMalformed);
    ExpectFailure("/callback?code=a%00b&state=state-1", Kind::Failed, IdRedirectMalformed);
    ExpectFailure("/callback?code=a%0D%0Ab&state=state-1", Kind::Failed, IdRedirectMalformed);
}

} // namespace

} // namespace Kestrany::Agent::OpenId
