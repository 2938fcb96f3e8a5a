#include <gtest/gtest.h>

#include "identity/simulated/SessionAddress.h"

namespace Kestrany::Agent::Simulated {

namespace {

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
