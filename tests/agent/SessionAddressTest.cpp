#include <gtest/gtest.h>

#include "identity/LoginService.h"
#include "identity/simulated/SessionAddress.h"

namespace Kestrany::Agent::Simulated {

namespace {

TEST(SessionAddressTest, WebAddressesNameAHostOverHttp)
{
    EXPECT_TRUE(IsWebAddress("https://a"));
    EXPECT_TRUE(IsWebAddress("http://a/b"));
    for (const char* other : {"", "https://", "https:///a", "http:/a", "HTTPS//a", "javascript:alert(1)", "ahttps://b"})
        EXPECT_FALSE(IsWebAddress(other)) << other;
}

TEST(SessionAddressTest, EveryByteBeyondTheUnreservedOnesIsEncoded)
{
    const std::string address = SessionAddress(TALIX_SERVER_STAGING, "http://\xC3\xAB/-._~#%", 65535, "ticket");
    EXPECT_EQ(address, "https://staging.simulator.invalid/session?ticket=ticket&flag=65535"
                       "&target=http%3A%2F%2F%C3%AB%2F-._~%23%25");
}

TEST(SessionAddressTest, AZeroByteIsEncodedLikeOthers)
{
    const std::string address = SessionAddress(TALIX_SERVER_STAGING, std::string("a\0b", 3), 0, "ticket");
    EXPECT_EQ(address, "https://staging.simulator.invalid/session?ticket=ticket&flag=0&target=a%00b");
}

} // namespace

} // namespace Kestrany::Agent::Simulated
