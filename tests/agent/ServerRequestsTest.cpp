#include "ServerTest.h"

#include <future>

#include "connection/Pipe.h"
#include "connection/ServerRequests.h"
#include "server/ServerInstance.h"
#include "server/ServerProcesses.h"

namespace Kestrany::Agent {

namespace {

constexpr std::int64_t Short = 100; // Milliseconds, where no answer is to come.

class ServerRequestsTest : public ServerTest
{
protected:
    /// A client of the test's own. Waits for its turn.
    Handle OpenPipe() const
    {
        const std::wstring name = ProcessPipeName(processId);
        Handle pipe;
        while (!pipe && WaitNamedPipeW(name.c_str(), static_cast<DWORD>(Limit)))
            pipe = OwnValid(CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                        FILE_FLAG_OVERLAPPED, nullptr));
        return pipe;
    }
};

TEST_F(ServerRequestsTest, AServerTellsWhatItIs)
{
    const std::optional<Answers> answers = PingServer(processId, Limit);
    ASSERT_TRUE(answers);
    EXPECT_EQ(answers->at("processId"), std::to_string(processId));
    EXPECT_EQ(answers->at("identity"), identity);
    EXPECT_EQ(answers->at("version"), AGENT_VERSION);
    EXPECT_EQ(answers->at("uptimeMilliseconds").find_first_not_of("0123456789"), std::string::npos);
    EXPECT_EQ(answers->size(), 4u);
}

TEST_F(ServerRequestsTest, ItsTimePasses)
{
    const auto first = std::stoull(PingServer(processId, Limit).value().at("uptimeMilliseconds"));
    EXPECT_FALSE(HasEnded(50)); // Awaits an event that does not come.
    const auto second = std::stoull(PingServer(processId, Limit).value().at("uptimeMilliseconds"));
    EXPECT_GT(second, first);
    EXPECT_LT(second, first + 60'000);
}

TEST_F(ServerRequestsTest, ManyAskAtTheSameTime)
{
    std::vector<std::future<bool>> pings;
    for (int index = 0; index < 8; ++index)
        pings.push_back(std::async(std::launch::async, [this] { return PingServer(processId, Limit).has_value(); }));
    for (std::future<bool>& ping : pings)
        EXPECT_TRUE(ping.get());
}

TEST_F(ServerRequestsTest, AProcessThatIsNoServerDoesNotAnswer)
{
    EXPECT_FALSE(PingServer(GetCurrentProcessId(), Short));
    EXPECT_FALSE(FreezeServer(GetCurrentProcessId(), Short));
    EXPECT_FALSE(ThawServer(GetCurrentProcessId(), Short));
}

TEST_F(ServerRequestsTest, APipeOfAnotherProcessIsNotBelieved)
{
    // This process takes the name that another server would have, and answers.
    const DWORD stranger = 123456;
    Pipe squatter(OwnValid(CreateNamedPipeW(
        ProcessPipeName(stranger).c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
        PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE, 1, Pipe::MaxMessage, Pipe::MaxMessage, 0, nullptr)));
    ASSERT_NE(squatter.Get(), nullptr);
    PendingOperation connection;
    ConnectNamedPipe(squatter.Get(), connection.Get());
    const auto answered = std::async(std::launch::async, [&] {
        WaitForSingleObject(connection.Event(), static_cast<DWORD>(Limit));
        squatter.Write("processId=123456\n", Deadline(Limit));
    });
    EXPECT_FALSE(PingServer(stranger, Limit));
}

TEST_F(ServerRequestsTest, ClientsThatMisbehaveDoNotStopTheServer)
{
    OpenPipe(); // comes and leaves
    {
        Pipe asks(OpenPipe()); // asks for what there is not
        EXPECT_TRUE(asks.Write("frob", Deadline(Limit)));
        EXPECT_EQ(asks.Read(Deadline(Limit)), "unknown request");
    }
    const Pipe silent(OpenPipe()); // asks nothing, and stays
    EXPECT_TRUE(PingServer(processId, Limit)) << "somebody who says nothing is sent away";
}

TEST_F(ServerRequestsTest, AFrozenServerDoesNotAnswerUntilItIsThawed)
{
    EXPECT_FALSE(ThawServer(processId, Short)) << "it is not frozen";
    ASSERT_TRUE(FreezeServer(processId, Limit));
    EXPECT_TRUE(FreezeServer(processId, Short)) << "it is frozen already";
    EXPECT_FALSE(PingServer(processId, Short));
    EXPECT_TRUE(ThawServer(processId, Limit));
    EXPECT_TRUE(PingServer(processId, Limit));
    EXPECT_FALSE(ThawServer(processId, Short));
    ASSERT_TRUE(FreezeServer(processId, Limit)) << "once more";
    EXPECT_FALSE(PingServer(processId, Short));
}

TEST_F(ServerRequestsTest, AFrozenServerQuitsWhenItIsThawed)
{
    ASSERT_TRUE(FreezeServer(processId, Limit));
    EXPECT_FALSE(processes.Quit(identity, 0)) << "asked, but it does not hear";
    EXPECT_FALSE(HasEnded(Short));
    ThawServer(processId, Short);
    EXPECT_TRUE(HasEnded(Limit));
    EXPECT_EQ(ExitCode(), static_cast<DWORD>(ServerQuit));
}

TEST_F(ServerRequestsTest, AFrozenServerIsTerminatedWhenItDoesNotQuitInTime)
{
    ASSERT_TRUE(FreezeServer(processId, Limit));
    EXPECT_FALSE(processes.Quit(identity, Short));
    EXPECT_TRUE(HasEnded(Limit));
    EXPECT_EQ(ExitCode(), static_cast<DWORD>(ServerFailed));
}

TEST(ServerTimeTest, AFrozenServerStillEndsAfterItsTime)
{
    const ServerProcesses processes([](TALIXLog::LogLevel, const std::string&) {});
    std::int64_t processId = 0;
    ASSERT_TRUE(processes.Start(ServerFile(), OwnIdentity("Time"), {L"--quit-after", L"1"},
                                OrlindexTest::PatienceMilliseconds, processId));
    const Handle process(OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(processId)));
    FreezeServer(static_cast<DWORD>(processId), OrlindexTest::PatienceMilliseconds);
    EXPECT_EQ(WaitForSingleObject(process.get(), OrlindexTest::PatienceMilliseconds), WAIT_OBJECT_0);
}

TEST(AnswersTest, OnlyLinesOfTheFormAreTaken)
{
    EXPECT_EQ(ReadAnswers(WriteAnswers({{"a", "1"}, {"b", ""}, {"c", "x=y"}})),
              (Answers{{"a", "1"}, {"b", ""}, {"c", "x=y"}}));
    EXPECT_EQ(ReadAnswers("=1\nno\n\nlast=1"), (Answers{{"last", "1"}}));
    EXPECT_EQ(ReadAnswers(std::string("a=\0b", 4)), (Answers{{"a", std::string("\0b", 2)}}));
}

} // namespace

} // namespace Kestrany::Agent
