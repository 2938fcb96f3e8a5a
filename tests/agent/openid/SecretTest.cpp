#include <gtest/gtest.h>

#include <cstring>
#include <utility>

#include "identity/Base64Url.h"
#include "identity/openid/Secret.h"

namespace Kestrany::Agent::OpenId {

namespace {

TEST(Base64UrlTest, TextsAreDecodedAsTheyWereEncoded)
{
    for (const std::string bytes : {"", "f", "fo", "foo", "foob", "\xFB\xFF", "\xFF\xFF\xFF"})
        EXPECT_EQ(FromBase64Url(Base64Url(bytes)), bytes);
    EXPECT_EQ(Base64Url("foobar"), "Zm9vYmFy");
    EXPECT_EQ(Base64Url("\xFB\xFF"), "-_8");
}

TEST(Base64UrlTest, EachValueHasOneTextOnly)
{
    EXPECT_EQ(FromBase64Url("Zg=="), std::nullopt) << "padding";
    EXPECT_EQ(FromBase64Url("Zh"), std::nullopt) << "a bit beyond the last byte";
    EXPECT_EQ(FromBase64Url("Zm9"), std::nullopt) << "a bit beyond the last byte";
    EXPECT_EQ(FromBase64Url("Z"), std::nullopt) << "half a byte";
    EXPECT_EQ(FromBase64Url("Zm9vA"), std::nullopt) << "half a byte";
    EXPECT_EQ(FromBase64Url("+/8"), std::nullopt) << "letters of base64";
    EXPECT_EQ(FromBase64Url("Zm9v\n"), std::nullopt) << "white space";
    EXPECT_EQ(FromBase64Url(std::string_view("Zm9v\0", 5)), std::nullopt) << "a zero";
}

TEST(SecretTest, ASecretHoldsItsText)
{
    Secret secret("abc");
    secret.Append("def");
    EXPECT_EQ(secret.View(), "abcdef");
    EXPECT_EQ(secret.Clone().View(), "abcdef");
    EXPECT_TRUE(Secret().IsEmpty());
}

TEST(SecretTest, AMovedSecretIsEmpty)
{
    Secret secret("abc");
    Secret other(std::move(secret));
    EXPECT_TRUE(secret.IsEmpty()); // NOLINT(bugprone-use-after-move,clang-analyzer-cplusplus.Move)
    EXPECT_EQ(other.View(), "abc");
    Secret third("xyz");
    third = std::move(other);
    EXPECT_EQ(third.View(), "abc");
}

TEST(SecretTest, BytesAreClearedInPlace)
{
    char bytes[] = "secret";
    ClearMemory(bytes, sizeof bytes);
    const char zeros[sizeof bytes] = "";
    EXPECT_EQ(std::memcmp(bytes, zeros, sizeof bytes), 0);
}

TEST(SecretTest, ATextIsClearedInItsWholeBuffer)
{
    std::string text = "a text that is longer than the object itself";
    const char* const bytes = text.data();
    const std::size_t size = text.size();
    ClearText(text);
    EXPECT_TRUE(text.empty());
    ASSERT_EQ(text.data(), bytes) << "the buffer was not replaced";
    ASSERT_GE(text.capacity(), size);
    for (std::size_t index = 0; index < size; ++index)
        EXPECT_EQ(bytes[index], '\0') << index;
}

TEST(SecretTest, SecretsAreEqualByTheirTexts)
{
    EXPECT_TRUE(AreEqualSecrets("abc", "abc"));
    EXPECT_TRUE(AreEqualSecrets("", ""));
    EXPECT_FALSE(AreEqualSecrets("abc", "abd"));
    EXPECT_FALSE(AreEqualSecrets("abc", "ab"));
    EXPECT_FALSE(AreEqualSecrets("", "a"));
}

} // namespace

} // namespace Kestrany::Agent::OpenId
