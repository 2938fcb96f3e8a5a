#include <gtest/gtest.h>

#include "TestProvider.h"
#include "identity/Json.h"
#include "identity/openid/ReplyJson.h"
#include "identity/openid/UserInfo.h"

namespace Kestrany::Agent::OpenId {

namespace {

constexpr char Url[] = "https://login.example.com/userinfo";

Json::Value Object(const std::string& text)
{
    std::string problem;
    return *ParseObject(text, problem);
}

IdErrorCode CodeOf(const HttpReply& reply)
{
    const Outcome<Json::Value> outcome = ParseUserInfo(reply, Url, "user-1");
    return FailureOf(outcome) == nullptr ? IdSuccess : FailureOf(outcome)->code;
}

TEST(UserInfoTest, TheSubjectMustBeTheOneOfTheIdToken)
{
    EXPECT_EQ(CodeOf(TextReply(R"({"sub":"user-1"})", "application/json")), IdSuccess);
    EXPECT_EQ(CodeOf(TextReply(R"({"sub":"user-2"})", "application/json")), IdSubjectDiffers);
    EXPECT_EQ(CodeOf(TextReply(R"({"sub":"USER-1"})", "application/json")), IdSubjectDiffers);
    EXPECT_EQ(CodeOf(TextReply(R"({"email":"a"})", "application/json")), IdUserInfoMalformed);
    EXPECT_EQ(CodeOf(TextReply(R"({"sub":1})", "application/json")), IdUserInfoMalformed);
}

TEST(UserInfoTest, AnotherReplyIsNotUsable)
{
    EXPECT_EQ(CodeOf(TextReply("a.b.c", "application/jwt")), IdUserInfoMalformed);
    EXPECT_EQ(CodeOf(TextReply("", "", 401)), IdUserInfoMalformed);
    EXPECT_EQ(CodeOf(TextReply("", "", 302)), IdUserInfoMalformed);
    EXPECT_EQ(CodeOf(TextReply("{", "application/json")), IdUserInfoMalformed);
    EXPECT_EQ(CodeOf(TextReply("", "", 503)), IdProviderFailed);
    EXPECT_EQ(CodeOf(ProblemReply(HttpProblem::ReplyTooLarge)), IdReplyTooLarge);
}

TEST(UserInfoTest, ClaimsOfTheIdTokenAreCompletedAndNotReplaced)
{
    const Json::Value claims =
        UserClaims(Object(R"({"iss":"i","aud":"a","exp":1,"iat":1,"nonce":"n","at_hash":"h","sub":"1","name":"Ann"})"),
                   Object(R"({"sub":"2","name":"Bob","email":"e","aud":"x","groups":["a","b"]})"));
    EXPECT_EQ(WriteJson(claims), R"({"email":"e","groups":["a","b"],"name":"Ann","sub":"1"})");
}

TEST(UserInfoTest, ClaimsThatFitNoProfileAreLeftOut)
{
    Json::Value idToken = Object(R"({"sub":"1","a":1e999})");
    idToken["long"] = std::string(65'536, 'a');
    Json::Value userInfo(Json::objectValue);
    for (int index = 0; index < 500; ++index)
        userInfo["claim" + std::to_string(index)] = index;
    const Json::Value claims = UserClaims(idToken, userInfo);
    EXPECT_EQ(claims.size(), 256u);
    EXPECT_FALSE(claims.isMember("a"));
    EXPECT_FALSE(claims.isMember("long"));
    EXPECT_TRUE(claims.isMember("sub"));
    Json::Value many(Json::objectValue);
    for (int index = 0; index < 9'000; ++index)
        many["list"].append(0);
    many["other"] = many["list"];
    EXPECT_EQ(UserClaims(many, Json::nullValue).size(), 1u) << "together they have too many values";
    std::string problem;
    EXPECT_TRUE(ParseObject(WriteJson(UserClaims(many, idToken)), problem)) << problem;
    // Half a character.
    EXPECT_EQ(WriteJson(UserClaims(Object(R"({"sub":"1","half":"\uDDDD","\uDDDD":1})"), Json::Value())),
              R"({"sub":"1"})");
}

TEST(UserInfoTest, TheStandardClaimsAreTheUsersAttributes)
{
    const Account account = AccountOf(Object(R"({"sub":"1","preferred_username":"ann","given_name":"Ann",
        "family_name":"Example","email":"ann@example.com","name":"Ann Example","locale":"en"})"));
    EXPECT_EQ(account.userId, "1");
    EXPECT_EQ(account.userName, "ann");
    EXPECT_EQ(account.firstName, "Ann");
    EXPECT_EQ(account.lastName, "Example");
    EXPECT_EQ(account.email, "ann@example.com");
    EXPECT_EQ(account.displayName, "Ann Example");
    EXPECT_EQ(account.profile["locale"].asString(), "en");
    EXPECT_EQ(account.profile["sub"].asString(), "1");
}

TEST(UserInfoTest, MissingNamesAreReplaced)
{
    EXPECT_EQ(AccountOf(Object(R"({"sub":"1","email":"e"})")).userName, "e");
    EXPECT_EQ(AccountOf(Object(R"({"sub":"1"})")).userName, "1");
    EXPECT_EQ(AccountOf(Object(R"({"sub":"1","email":"e"})")).displayName, "e");
    EXPECT_EQ(AccountOf(Object(R"({"sub":"1","preferred_username":7,"email":"a\u0000b"})")).userName, "1");
}

} // namespace

} // namespace Kestrany::Agent::OpenId
