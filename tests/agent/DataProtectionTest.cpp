#include <gtest/gtest.h>

#include "platform/DataProtection.h"

namespace Kestrany::Agent {

namespace {

TEST(DataProtectionTest, BytesAreDecryptedForTheSamePurposeOnly)
{
    const std::string bytes("a\0b\xFF", 4);
    const std::string protectedBytes = Protect(bytes, "one");
    EXPECT_EQ(protectedBytes.find(bytes), std::string::npos);
    EXPECT_EQ(Unprotect(protectedBytes, "one"), bytes);
    EXPECT_FALSE(Unprotect(protectedBytes, "other"));
    EXPECT_EQ(Unprotect(Protect("", "one"), "one"), "");
}

TEST(DataProtectionTest, OtherBytesAreRefused)
{
    const std::string protectedBytes = Protect("secret", "one");
    std::string damaged = protectedBytes;
    damaged.back() ^= 1;
    for (const std::string& other : {std::string(), std::string("secret"), damaged,
                                     protectedBytes.substr(0, protectedBytes.size() - 1), protectedBytes.substr(1)})
        EXPECT_FALSE(Unprotect(other, "one"));
}

TEST(DataProtectionTest, ATextIsEncryptedToBase64AndDecrypted)
{
    for (const std::wstring& text :
         {std::wstring(), std::wstring(L"secret"), std::wstring(L"Zo\x00EB \xD83D\xDE00"), std::wstring(100'000, L'x')})
    {
        const std::optional<std::wstring> encrypted = EncryptText(text);
        ASSERT_TRUE(encrypted);
        EXPECT_EQ(encrypted->find_first_not_of(L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/="),
                  std::wstring::npos);
        EXPECT_EQ(encrypted->size() % 4, 0u);
        EXPECT_EQ(DecryptText(*encrypted), text);
    }
}

TEST(DataProtectionTest, OtherTextsAreNotDecrypted)
{
    const wchar_t notUtf16[] = {L'a', 0xD800, 0};
    EXPECT_FALSE(EncryptText(notUtf16));
    const std::wstring encrypted = EncryptText(L"secret").value();
    for (const std::wstring& other : {std::wstring(), std::wstring(L"secret"), std::wstring(L"c2VjcmV0"),
                                      encrypted.substr(4), encrypted.substr(0, encrypted.size() - 8)})
        EXPECT_FALSE(DecryptText(other)) << other.size();
}

} // namespace

} // namespace Kestrany::Agent
