#include <gtest/gtest.h>

#include "identity/openid/ReplyJson.h"

namespace Kestrany::Agent::OpenId {

namespace {

class ReplyJsonTest : public testing::Test
{
protected:
    std::optional<SecretObject> Parse(const std::string& text)
    {
        return SecretObject::Parse(Secret(text), {"token", "other"}, problem);
    }

    std::string problem;
};

TEST_F(ReplyJsonTest, SecretsAreTakenOutBeforeTheTextIsParsed)
{
    std::optional<SecretObject> object = Parse(R"({ "a" : "token", "token" : "s\/e\"c\\r\u0065t", "b": 1 })");
    ASSERT_TRUE(object) << problem;
    EXPECT_EQ(object->Root()["a"].asString(), "token");
    EXPECT_EQ(object->Root()["b"].asInt(), 1);
    EXPECT_EQ(object->Root()["token"].asString(), std::string(17, '*'));
    EXPECT_EQ(object->Take(object->Root()["token"]).View(), "s/e\"c\\ret");
    EXPECT_TRUE(object->Take(object->Root()["token"]).IsEmpty()) << "taken before";
    EXPECT_TRUE(object->Take(object->Root()["a"]).IsEmpty());
    EXPECT_TRUE(object->Take(object->Root()["missing"]).IsEmpty());
}

TEST_F(ReplyJsonTest, SecretsAreTakenOutAtAnyDepth)
{
    std::optional<SecretObject> object = Parse(R"({"list":[{"token":"one"},{"token":"two","other":""}]})");
    ASSERT_TRUE(object) << problem;
    const Json::Value& list = object->Root()["list"];
    EXPECT_EQ(object->Take(list[1]["token"]).View(), "two");
    EXPECT_EQ(object->Take(list[0]["token"]).View(), "one");
    EXPECT_TRUE(object->Take(list[1]["other"]).IsEmpty());
}

TEST_F(ReplyJsonTest, AMemberOfAnotherTypeIsNoSecret)
{
    for (const char* const text :
         {R"({"token":7,"a":"b"})", R"({"token":{"a":"b"}})", R"({"token":["b"]})", R"({"token":null})"})
    {
        std::optional<SecretObject> object = Parse(text);
        ASSERT_TRUE(object) << problem;
        EXPECT_TRUE(object->Take(object->Root()["token"]).IsEmpty()) << text;
    }
}

TEST_F(ReplyJsonTest, AnEscapedNameIsRefusedBecauseASecretCouldHideBehindIt)
{
    EXPECT_FALSE(Parse(R"({"tok\u0065n":"secret"})"));
    EXPECT_EQ(problem, "JSON with an escaped member name");
    EXPECT_TRUE(Parse(R"({"a":"an \"escaped\" value"})"));
}

TEST_F(ReplyJsonTest, ASecretIsPlainAscii)
{
    for (const char* const text :
         {R"({"token":"a\nb"})", R"({"token":"\u0000"})", R"({"token":"\u00e4"})", "{\"token\":\"\xC3\xA4\"}",
          R"({"token":"\x"})", R"({"token":"\u12"})", R"({"token":"\u+041"})"})
        EXPECT_FALSE(Parse(text)) << text;
}

TEST_F(ReplyJsonTest, AMalformedTextIsRefused)
{
    for (const char* const text : {"", "{", "[]", "7", "{\"token\":\"a", "{\"token\":", "{\"token\"", "\"",
                                   "{\"a\":1,\"a\":2}", "{\"token\":\"a\",\"token\":\"b\"}", "{} {}", "{\"a\":'b'}",
                                   "{/**/}", "{/*\"*/\"token\":\"secret\"}", "{\"a\":\"\\"})
    {
        problem.clear();
        EXPECT_FALSE(Parse(text)) << text;
        EXPECT_FALSE(problem.empty()) << text;
    }
}

TEST_F(ReplyJsonTest, DepthAndNumberOfValuesAreLimited)
{
    const auto nested = [](std::size_t depth) {
        return "{\"a\":" + std::string(depth - 1, '[') + std::string(depth - 1, ']') + "}";
    };
    EXPECT_TRUE(ParseObject(nested(32), problem)) << problem;
    EXPECT_FALSE(ParseObject(nested(33), problem));
    const auto many = [](std::size_t count) {
        std::string list = "0";
        for (std::size_t index = 1; index < count; ++index)
            list += ",0";
        return "{\"a\":[" + list + "]}";
    };
    EXPECT_TRUE(ParseObject(many(9'000), problem)) << problem;
    EXPECT_FALSE(ParseObject(many(11'000), problem));
    EXPECT_TRUE(ParseObject("{\"a\":\"" + std::string(20'000, ',') + "\"}", problem)) << "commas within a text";
}

TEST_F(ReplyJsonTest, SecondsAreNumbersInTheirRange)
{
    const auto seconds = [](const char* text) {
        std::string ignored;
        return SecondsMember(*ParseObject("{\"a\":" + std::string(text) + "}", ignored), "a");
    };
    EXPECT_EQ(seconds("0"), 0);
    EXPECT_EQ(seconds("1700000000"), 1'700'000'000);
    EXPECT_EQ(seconds("1700000000.9"), 1'700'000'000);
    EXPECT_EQ(seconds("1.7e9"), 1'700'000'000);
    for (const char* const text :
         {"-1", "-0.5", "1e300", "1e999", "99999999999999999999", "\"1\"", "true", "null", "[]"})
        EXPECT_EQ(seconds(text), std::nullopt) << text;
}

TEST_F(ReplyJsonTest, SomeProvidersWriteSecondsAsATextOfDigits)
{
    const auto seconds = [](const char* text) {
        std::string ignored;
        return LenientSecondsMember(*ParseObject("{\"a\":" + std::string(text) + "}", ignored), "a");
    };
    EXPECT_EQ(seconds("\"300\""), 300);
    EXPECT_EQ(seconds("300"), 300);
    for (const char* const text : {"\"\"", "\"-1\"", "\"3 \"", "\"0x3\"", "\"99999999999999999999\"", "true"})
        EXPECT_EQ(seconds(text), std::nullopt) << text;
}

TEST_F(ReplyJsonTest, TextsAreNeitherEmptyNorLongAndHaveNoControlCharacters)
{
    const auto text = [](const std::string& value) {
        Json::Value object(Json::objectValue);
        object["a"] = value;
        return TextMember(object, "a", 5);
    };
    EXPECT_EQ(text("abcde"), "abcde");
    EXPECT_EQ(text("abcdef"), std::nullopt);
    EXPECT_EQ(text(""), std::nullopt);
    EXPECT_EQ(text("a\nb"), std::nullopt);
    EXPECT_EQ(text(std::string("a\0b", 3)), std::nullopt);
    EXPECT_EQ(text("a\x7F"), std::nullopt);
}

} // namespace

} // namespace Kestrany::Agent::OpenId
