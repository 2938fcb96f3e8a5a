#include "ServerTest.h"

#include "OtherHost.h"
#include "server/ServerInstance.h"
#include "support/Patience.h"

namespace Kestrany::Agent {

namespace {

constexpr std::int64_t Limit = OrlindexTest::PatienceMilliseconds;

class TwoHostsTest : public testing::Test
{
protected:
    ~TwoHostsTest() override { processes.Quit(identity, Limit); }

    const std::string identity = OwnIdentity("Shared");
    const ServerProcesses processes{[](TALIXLog::LogLevel, const std::string&) {}};
};

TEST_F(TwoHostsTest, HostsThatStartAtOnceUseOneServer)
{
    const OtherHost first("server", {identity});
    const OtherHost second("server", {identity});
    // Each found that the server it started is running and responds with that process ID.
    ASSERT_TRUE(first.HasArrived());
    ASSERT_TRUE(second.HasArrived());
    const auto server = FindServer(identity);
    ASSERT_TRUE(server);
    EXPECT_TRUE(IsServerReady(identity));

    first.Leave();
    EXPECT_EQ(first.ExitCode(), 0u);
    EXPECT_EQ(FindServer(identity), server) << "the other host uses it";
    second.Leave();
    EXPECT_EQ(second.ExitCode(), 0u);
    EXPECT_EQ(FindServer(identity), server) << "it waits for the next host";
    EXPECT_TRUE(processes.Quit(identity, Limit));
}

TEST_F(TwoHostsTest, AHostThatDiesLeavesTheServerToTheOther)
{
    const OtherHost first("server", {identity});
    const OtherHost second("server", {identity});
    ASSERT_TRUE(first.HasArrived());
    ASSERT_TRUE(second.HasArrived());
    const auto server = FindServer(identity);
    first.Kill();
    EXPECT_EQ(first.ExitCode(), 9u);
    EXPECT_EQ(FindServer(identity), server);
    EXPECT_TRUE(IsServerReady(identity));
    second.Leave();
    EXPECT_EQ(second.ExitCode(), 0u);
}

} // namespace

} // namespace Kestrany::Agent
