#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

#include "identity/simulated/Token.h"

namespace Kestrany::Agent::Simulated {

namespace {

RandomSource Fixed(const std::string& bytes)
{
    return [bytes](void* target, std::size_t size) {
        ASSERT_EQ(size, bytes.size());
        std::copy_n(bytes.data(), size, static_cast<char*>(target));
    };
}

TEST(TokenTest, BytesBecomeBase64urlWithoutPadding)
{
    // The examples of RFC 4648, and two that need the letters in which base64url differs.
    EXPECT_EQ(RandomText(Fixed(""), 0), "");
    EXPECT_EQ(RandomText(Fixed("f"), 1), "Zg");
    EXPECT_EQ(RandomText(Fixed("fo"), 2), "Zm8");
    EXPECT_EQ(RandomText(Fixed("foo"), 3), "Zm9v");
    EXPECT_EQ(RandomText(Fixed("foobar"), 6), "Zm9vYmFy");
    EXPECT_EQ(RandomText(Fixed("\xFB\xFF"), 2), "-_8");
    EXPECT_EQ(RandomText(Fixed("\xFF\xFF\xFF"), 3), "____");
}

TEST(TokenTest, AFailureOfTheRandomSourceIsReported)
{
    const RandomSource broken = [](void*, std::size_t) { throw std::runtime_error("no random bytes"); };
    EXPECT_THROW(RandomText(broken, 16), std::runtime_error);
}

} // namespace

} // namespace Kestrany::Agent::Simulated
