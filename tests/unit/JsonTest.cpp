// Parsing JSON from any source.

#include <gtest/gtest.h>
#include <string>

#include "base/Json.h"
#include "base/JsonNumbers.h"

namespace OrlindexTest {

using Kestrany::IdentityServices::IsNumberOutOfRange;
using Kestrany::IdentityServices::JsonError;
using Kestrany::IdentityServices::MemberOf;
using Kestrany::IdentityServices::ParseJson;
using Kestrany::IdentityServices::WithNumbersInRange;

namespace {

std::string Repeated(const std::string& text, int count)
{
    std::string repeated;
    for (int i = 0; i < count; ++i)
        repeated += text;
    return repeated;
}

std::string Nested(const std::string& open, const std::string& close, int depth)
{
    return Repeated(open, depth) + Repeated(close, depth);
}

} // namespace

TEST(ParseJson, ReadsADocument)
{
    const auto root = ParseJson(R"({"key": ["text", 1, true, null]})").root;
    ASSERT_TRUE(root);
    EXPECT_EQ((*root)["key"][0].asString(), "text");
    EXPECT_EQ((*root)["key"].size(), 4u);
}

TEST(ParseJson, AcceptsAByteOrderMark)
{
    const auto root = ParseJson("\xEF\xBB\xBF{\"key\": \"text\"}").root;
    ASSERT_TRUE(root);
    EXPECT_EQ((*root)["key"].asString(), "text");
}

TEST(ParseJson, RefusesAByteOrderMarkElsewhereOrAloneOrInPart)
{
    for (const char* text : {"\xEF\xBB\xBF", "\xEF\xBB\xBF\xEF\xBB\xBF{}", " \xEF\xBB\xBF{}", "\xEF\xBB{}", "\xEF\xBB"})
        EXPECT_FALSE(ParseJson(text).root) << text;
}

TEST(ParseJson, AcceptsComments)
{
    const auto root = ParseJson("// first\n{ /* second */ \"key\": // third\n \"text\" }\n// fourth").root;
    ASSERT_TRUE(root);
    EXPECT_EQ((*root)["key"].asString(), "text");
}

TEST(ParseJson, RefusesWhatIsNoJson)
{
    for (const std::string text : {"", " ", "\r\n\t", "{", "}", "{\"a\": }", "{\"a\" 1}", "[1, 2", "\"open", "nonsense",
                                   "/* open {}", "{'a': 1}", "[1e]", "[1e+, 2]", "[-e5]"})
        EXPECT_FALSE(ParseJson(text).root) << text;
}

TEST(ParseJson, RefusesACommaAfterTheLast)
{
    for (const std::string text : {"{\"a\": 1,}", "[1,]", "{\"a\": [1, 2, ]}", "[{\"a\": {}, /* last */ }]"})
        EXPECT_FALSE(ParseJson(text).root) << text;
}

TEST(ParseJson, RefusesBinaryBytes)
{
    EXPECT_FALSE(ParseJson(std::string("MZ\x90\0\x03\0\0\0\x04\0\0\0\xFF\xFF", 14)).root);
    EXPECT_FALSE(ParseJson(std::string(4096, '\0')).root);
    EXPECT_FALSE(ParseJson(std::string("\xFF\xFE{\0}\0", 6)).root) << "UTF-16";
}

TEST(ParseJson, KeepsBytesOfATextThatAreNoUtf8)
{
    const auto root = ParseJson("{\"key\": \"a\xFFz\"}").root;
    ASSERT_TRUE(root);
    EXPECT_EQ((*root)["key"].asString(), "a\xFFz");
}

TEST(ParseJson, ADocumentNestedTooDeepIsRefused)
{
    EXPECT_FALSE(ParseJson(Nested("[", "]", 1100)).root);
    EXPECT_FALSE(ParseJson(Nested("{\"a\":", "}", 1100)).root);
    EXPECT_FALSE(ParseJson(Repeated("[", 1000000)).root) << "nobody closes them";
    EXPECT_FALSE(ParseJson(Repeated("{\"a\":", 200000)).root);
}

TEST(ParseJson, ADocumentNestedWithinTheLimitIsRead)
{
    EXPECT_TRUE(ParseJson(Nested("[", "]", 500)).root);
}

TEST(ParseJson, ANumberOutOfRangeCostsItsPlaceAlone)
{
    const std::string numbers[] = {"1e999",
                                   "-1e999",
                                   "+2E+308",
                                   "1e-999",
                                   "1e307",
                                   "-.5e400",
                                   "12e306",
                                   "0.001e310",
                                   "9e99999999999999999999",
                                   "1" + std::string(400, '0'),
                                   "0." + std::string(400, '0') + '1',
                                   "1e1" + std::string(2000, '0')};
    for (const std::string& number : numbers)
    {
        const auto root =
            ParseJson("{\"first\": " + number + ", \"list\": [" + number + ',' + number + "], \"key\": 7}").root;
        ASSERT_TRUE(root) << number;
        EXPECT_TRUE(IsNumberOutOfRange((*root)["first"])) << number;
        EXPECT_EQ((*root)["list"].size(), 2u) << number;
        EXPECT_TRUE(IsNumberOutOfRange((*root)["list"][1])) << number;
        EXPECT_EQ((*root)["key"].asInt(), 7) << number;
    }
}

TEST(ParseJson, ANumberInRangeIsReadAsItStands)
{
    const auto root =
        ParseJson(R"([0, -17, 1.5, 1e306, 0.001e309, 1000000e300, 0e999, 0.00e-999, 1e-306, -5e300])").root;
    ASSERT_TRUE(root);
    const double expected[] = {0, -17, 1.5, 1e306, 1e306, 1e306, 0, 0, 1e-306, -5e300};
    ASSERT_EQ(root->size(), 10u);
    for (Json::ArrayIndex i = 0; i < root->size(); ++i)
    {
        EXPECT_DOUBLE_EQ((*root)[i].asDouble(), expected[i]);
        EXPECT_FALSE(IsNumberOutOfRange((*root)[i])) << expected[i];
    }
    EXPECT_EQ((*root)[1].asString(), "-17");
}

TEST(ParseJson, WhatIsNoNumberIsNeverOutOfRange)
{
    for (const char* text : {"[]", "{}", "true", "null", "\"1e999\"", "18446744073709551615"})
    {
        const auto root = ParseJson(text).root;
        ASSERT_TRUE(root) << text;
        EXPECT_FALSE(IsNumberOutOfRange(*root)) << text;
    }
}

TEST(ParseJson, ANumberOutOfRangeInATextOrACommentIsNone)
{
    const auto root =
        ParseJson("// 1e999\n{\"1e999\": /* 1e999 \" */ \"\\\"1e999\\\\\", \"b\": \"//\", \"c\": [1e999]}").root;
    ASSERT_TRUE(root);
    EXPECT_EQ((*root)["1e999"].asString(), "\"1e999\\");
    EXPECT_TRUE(IsNumberOutOfRange((*root)["c"][0])) << "a text that begins like a comment opens none";
}

TEST(ParseJson, ASlashThatOpensNoCommentHidesNoNumber)
{
    EXPECT_TRUE(WithNumbersInRange("/1e999"));
    EXPECT_FALSE(ParseJson("/[1e999]").root);
}

TEST(ParseJson, AnErrorKeepsItsPlaceBehindANumberOutOfRange)
{
    const std::string longNumber(2000, '9');
    const struct
    {
        std::string text;
        int line;
        int column;
    } rows[] = {{"[1e999, nonsense]", 1, 9},
                {"{\"a\": 1e999999,\r\n \"b\": nonsense}", 2, 7},
                {'[' + longNumber + ", nonsense]", 1, 2004},
                {'[' + longNumber + "\n nonsense]", 2, 2},
                {"[\n" + longNumber + "e]", 2, 1},
                {"[1-1e999]", 1, 3},
                {"[1e999x]", 1, 7},
                {"[1e999\"text\"]", 1, 7}};
    for (const auto& row : rows)
    {
        const auto document = ParseJson(row.text);
        EXPECT_FALSE(document.root) << row.text;
        const JsonError& error = document.error;
        EXPECT_EQ(error.line, row.line) << row.text;
        EXPECT_EQ(error.column, row.column) << row.text;
    }
}

TEST(MemberOf, FindsAMember)
{
    const auto root = ParseJson(R"({"key": "text", "other": null})").root;
    ASSERT_TRUE(root);
    EXPECT_EQ(MemberOf(*root, "key").asString(), "text");
    EXPECT_TRUE(MemberOf(*root, "other").isNull());
}

TEST(MemberOf, IsNullWhereThereIsNone)
{
    const auto root = ParseJson(R"({"key": "text"})").root;
    ASSERT_TRUE(root);
    EXPECT_TRUE(MemberOf(*root, "Key").isNull());
    EXPECT_TRUE(MemberOf(*root, "").isNull());
    EXPECT_TRUE(MemberOf(*root, std::string("key\0", 4)).isNull());
    EXPECT_EQ(root->size(), 1u) << "looking does not make a member";
}

TEST(MemberOf, IsNullOfWhatIsNoObject)
{
    for (const char* text : {"[]", "[1]", "1", "1.5", "true", "\"key\"", "null"})
    {
        const auto root = ParseJson(text).root;
        ASSERT_TRUE(root) << text;
        EXPECT_TRUE(MemberOf(*root, "key").isNull()) << text;
    }
}

} // namespace OrlindexTest
