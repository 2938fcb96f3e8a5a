#include <gtest/gtest.h>

#include <stdexcept>

#include "platform/Crypto.h"
#include "platform/SigningKey.h"

namespace Kestrany::Agent {

namespace {

TEST(SigningKeyTest, AKeyIsExportedAndImported)
{
    const SigningKey key = SigningKey::Generate();
    const SigningKey same = SigningKey::Import(key.Export());
    EXPECT_EQ(key.X(), same.X());
    EXPECT_EQ(key.Y(), same.Y());
    EXPECT_EQ(same.Sign("text").size(), 64u);
    EXPECT_NE(SigningKey::Generate().X(), key.X());
}

TEST(SigningKeyTest, OtherBytesAreRefused)
{
    const std::string bytes = SigningKey::Generate().Export();
    for (const std::string& other : {std::string(), bytes.substr(1), bytes + "x", std::string(bytes.size(), 'x')})
        EXPECT_THROW(SigningKey::Import(other), std::invalid_argument);
}

TEST(CryptoTest, TheDigestIsSha256)
{
    EXPECT_EQ(Sha256("abc").substr(0, 4), "\xBA\x78\x16\xBF");
}

} // namespace

} // namespace Kestrany::Agent
