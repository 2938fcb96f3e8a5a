#include <gtest/gtest.h>

#include "identity/LoginService.h"

namespace Kestrany::Agent {

namespace {

TEST(ServerNamesTest, OnlyKnownServersHaveNames)
{
    EXPECT_EQ(ServerName(TALIX_SERVER_PRODUCTION), "production");
    EXPECT_EQ(ServerName(TALIX_SERVER_STAGING), "staging");
    EXPECT_EQ(ServerName(TALIX_SERVER_DEVELOPMENT), "development");
    EXPECT_EQ(ServerName(TALIX_SERVER_UNAVAILABLE), "");
    EXPECT_EQ(ServerName(static_cast<Server>(3)), "");
}

TEST(ServerNamesTest, NamesLeadBackToTheirServersLetterByLetter)
{
    for (const Server server : Servers)
        EXPECT_EQ(ServerOfName(ServerName(server)), server);
    for (const char* other : {"", "Production", "production ", "prod", "0"})
        EXPECT_EQ(ServerOfName(other), TALIX_SERVER_UNAVAILABLE) << other;
}

} // namespace

} // namespace Kestrany::Agent
