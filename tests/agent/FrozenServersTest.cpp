#include "ServerTest.h"

#include "connection/ServerRequests.h"
#include "server/FrozenServers.h"
#include "server/ServerProcesses.h"

namespace Kestrany::Agent {

namespace {

constexpr std::int64_t AnswerLimit = 1000;

class FrozenServersTest : public ServerTest
{
protected:
    FrozenServers frozen{log, AnswerLimit};
};

TEST_F(FrozenServersTest, AServerThatStaysFrozenIsTerminatedAfterItsTime)
{
    ASSERT_TRUE(frozen.SetKillSeconds(1));
    ASSERT_TRUE(FreezeServer(processId, Limit));
    frozen.Add(processId);
    EXPECT_FALSE(HasEnded(500)) << "before its time";
    EXPECT_TRUE(HasEnded(Limit));
    EXPECT_EQ(ExitCode(), static_cast<DWORD>(ServerFailed));
    frozen.Remove(processId); // Waits until the message is written.
    EXPECT_NE(lastMessage.find("was terminated"), std::string::npos) << lastMessage;
}

TEST_F(FrozenServersTest, AServerThatIsFoundFrozenAgainKeepsItsTime)
{
    ASSERT_TRUE(frozen.SetKillSeconds(1));
    ASSERT_TRUE(FreezeServer(processId, Limit));
    frozen.Add(processId);
    ASSERT_TRUE(frozen.SetKillSeconds(3600));
    frozen.Add(processId);
    EXPECT_TRUE(HasEnded(Limit)) << "its time starts when it is found first";
}

TEST_F(FrozenServersTest, AServerThatRespondsAgainIsNotTerminated)
{
    FrozenServers patient{log, Limit}; // A busy machine may respond slowly.
    ASSERT_TRUE(patient.SetKillSeconds(1));
    ASSERT_TRUE(FreezeServer(processId, Limit));
    patient.Add(processId);
    ASSERT_TRUE(ThawServer(processId, Limit)); // The watch is not told.
    EXPECT_FALSE(HasEnded(1500));
}

TEST_F(FrozenServersTest, ARemovedServerIsNotTerminatedIfItFreezesAgain)
{
    ASSERT_TRUE(frozen.SetKillSeconds(1));
    frozen.Add(processId);
    frozen.Remove(processId);
    ASSERT_TRUE(FreezeServer(processId, Limit));
    EXPECT_FALSE(HasEnded(1000 + AnswerLimit + 500));
}

TEST_F(FrozenServersTest, WithATimeOfZeroServersAreNotTerminated)
{
    ASSERT_TRUE(frozen.SetKillSeconds(0));
    ASSERT_TRUE(FreezeServer(processId, Limit));
    frozen.Add(processId);
    EXPECT_FALSE(HasEnded(AnswerLimit + 500));
    ASSERT_TRUE(frozen.SetKillSeconds(1));
    frozen.Add(processId);
    EXPECT_TRUE(HasEnded(Limit)) << "found once more, with a time";
}

TEST_F(FrozenServersTest, TheWatchEndsWithItsOwner)
{
    ASSERT_TRUE(FreezeServer(processId, Limit));
    const ULONGLONG before = GetTickCount64();
    {
        FrozenServers own(log, AnswerLimit);
        ASSERT_TRUE(own.SetKillSeconds(3600));
        own.Add(processId);
    }
    EXPECT_LT(GetTickCount64() - before, 60'000u);
    EXPECT_FALSE(HasEnded(0));
}

TEST_F(FrozenServersTest, TimesOutOfRangeChangeNothing)
{
    const std::int64_t before = frozen.KillSeconds();
    EXPECT_GT(before, 0);
    EXPECT_FALSE(frozen.SetKillSeconds(-1));
    EXPECT_FALSE(frozen.SetKillSeconds(FrozenServers::MaxKillSeconds + 1));
    EXPECT_EQ(frozen.KillSeconds(), before);
    EXPECT_TRUE(frozen.SetKillSeconds(FrozenServers::MaxKillSeconds));
    EXPECT_EQ(frozen.KillSeconds(), FrozenServers::MaxKillSeconds);
}

} // namespace

} // namespace Kestrany::Agent
