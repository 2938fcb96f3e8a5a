// Parsing JSON that anybody may have written.

#include <gtest/gtest.h>
#include <string>

#include "base/JsonDocument.h"

namespace OrlindexTest {

using Kestrany::IdentityServices::MemberOf;
using Kestrany::IdentityServices::ParseJson;

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
    const auto root = ParseJson(R"({"key": ["text", 1, true, null]})");
    ASSERT_TRUE(root);
    EXPECT_EQ((*root)["key"][0].asString(), "text");
    EXPECT_EQ((*root)["key"].size(), 4u);
}

TEST(ParseJson, AcceptsAByteOrderMark)
{
    const auto root = ParseJson("\xEF\xBB\xBF{\"key\": \"text\"}");
    ASSERT_TRUE(root);
    EXPECT_EQ((*root)["key"].asString(), "text");
}

TEST(ParseJson, RefusesAByteOrderMarkElsewhereOrAloneOrInPart)
{
    for (const char* text : {"\xEF\xBB\xBF", "\xEF\xBB\xBF\xEF\xBB\xBF{}", " \xEF\xBB\xBF{}", "\xEF\xBB{}", "\xEF\xBB"})
        EXPECT_FALSE(ParseJson(text)) << text;
}

TEST(ParseJson, AcceptsComments)
{
    const auto root = ParseJson("// first\n{ /* second */ \"key\": // third\n \"text\" }\n// fourth");
    ASSERT_TRUE(root);
    EXPECT_EQ((*root)["key"].asString(), "text");
}

TEST(ParseJson, RefusesWhatIsNoJson)
{
    for (const std::string text : {"", " ", "\r\n\t", "{", "}", "{\"a\": }", "{\"a\" 1}", "[1, 2", "\"open", "nonsense",
                                   "/* open {}", "{'a': 1}"})
        EXPECT_FALSE(ParseJson(text)) << text;
}

TEST(ParseJson, RefusesBinaryBytes)
{
    EXPECT_FALSE(ParseJson(std::string("MZ\x90\0\x03\0\0\0\x04\0\0\0\xFF\xFF", 14)));
    EXPECT_FALSE(ParseJson(std::string(4096, '\0')));
    EXPECT_FALSE(ParseJson(std::string("\xFF\xFE{\0}\0", 6))) << "UTF-16";
}

TEST(ParseJson, KeepsBytesOfATextThatAreNoUtf8)
{
    const auto root = ParseJson("{\"key\": \"a\xFFz\"}");
    ASSERT_TRUE(root);
    EXPECT_EQ((*root)["key"].asString(), "a\xFFz");
}

TEST(ParseJson, ADocumentNestedTooDeepIsRefused)
{
    EXPECT_FALSE(ParseJson(Nested("[", "]", 1100)));
    EXPECT_FALSE(ParseJson(Nested("{\"a\":", "}", 1100)));
    EXPECT_FALSE(ParseJson(Repeated("[", 1000000))) << "nobody closes them";
    EXPECT_FALSE(ParseJson(Repeated("{\"a\":", 200000)));
}

TEST(ParseJson, ADocumentNestedWithinTheLimitIsRead)
{
    EXPECT_TRUE(ParseJson(Nested("[", "]", 500)));
}

TEST(ParseJson, ANumberTooLargeIsNoException)
{
    for (const char* number : {"1e999", "-1e999", "123456789012345678901234567890", "-99999999999999999999", "1e-999"})
        EXPECT_NO_THROW(ParseJson("{\"key\": " + std::string(number) + "}")) << number;
}

TEST(MemberOf, FindsAMember)
{
    const auto root = ParseJson(R"({"key": "text", "other": null})");
    ASSERT_TRUE(root);
    EXPECT_EQ(MemberOf(*root, "key").asString(), "text");
    EXPECT_TRUE(MemberOf(*root, "other").isNull());
}

TEST(MemberOf, IsNullWhereThereIsNone)
{
    const auto root = ParseJson(R"({"key": "text"})");
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
        const auto root = ParseJson(text);
        ASSERT_TRUE(root) << text;
        EXPECT_TRUE(MemberOf(*root, "key").isNull()) << text;
    }
}

} // namespace OrlindexTest
