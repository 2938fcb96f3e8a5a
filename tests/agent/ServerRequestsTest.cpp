#include "ServerTest.h"

#include <atomic>
#include <future>

#include "connection/Pipe.h"
#include "connection/PipeListener.h"
#include "connection/ServerRequests.h"
#include "server/ServerInstance.h"
#include "server/ServerProcesses.h"

namespace Kestrany::Agent {

namespace {

constexpr std::int64_t Short = 100; // Milliseconds, if no response is expected.

class ServerRequestsTest : public ServerTest
{
protected:
    /// Connects a client of the test itself.
    Handle Connect() const { return OpenPipe(ProcessPipeName(processId), Deadline(Limit)); }
};

TEST_F(ServerRequestsTest, APingDescribesTheServer)
{
    const auto texts = PingServer(processId, Limit);
    ASSERT_TRUE(texts);
    EXPECT_EQ(texts->at("processId"), std::to_string(processId));
    EXPECT_EQ(texts->at("identity"), identity);
    EXPECT_EQ(texts->at("version"), AGENT_VERSION);
    EXPECT_EQ(texts->at("uptimeMilliseconds").find_first_not_of("0123456789"), std::string::npos);
    EXPECT_EQ(texts->size(), 4u);
}

TEST_F(ServerRequestsTest, TheUptimeGrows)
{
    const auto first = std::stoull(PingServer(processId, Limit).value().at("uptimeMilliseconds"));
    EXPECT_FALSE(HasEnded(50)); // Lets some time pass.
    const auto second = std::stoull(PingServer(processId, Limit).value().at("uptimeMilliseconds"));
    EXPECT_GT(second, first);
    EXPECT_LT(second, first + 60'000);
}

TEST_F(ServerRequestsTest, ManyPingsAtOnceSucceed)
{
    std::vector<std::future<bool>> pings;
    for (int index = 0; index < 8; ++index)
        pings.push_back(std::async(std::launch::async, [this] { return PingServer(processId, Limit).has_value(); }));
    for (std::future<bool>& ping : pings)
        EXPECT_TRUE(ping.get());
}

TEST_F(ServerRequestsTest, AProcessThatIsNoServerDoesNotRespond)
{
    EXPECT_FALSE(PingServer(GetCurrentProcessId(), Short));
    EXPECT_FALSE(FreezeServer(GetCurrentProcessId(), Short));
    EXPECT_FALSE(ThawServer(GetCurrentProcessId(), Short));
}

TEST_F(ServerRequestsTest, APipeOfAnotherProcessIsNotTrusted)
{
    // This process takes the name that another server would have, and responds.
    const DWORD stranger = 123456;
    PipeListener squatter(ProcessPipeName(stranger));
    std::atomic<bool> asked = false;
    const auto served = std::async(std::launch::async, [&] {
        WaitForSingleObject(squatter.Connected(), static_cast<DWORD>(Limit));
        Handle pipe = squatter.Accept();
        PipeClient client(std::move(pipe)); // Frames are the same in both directions.
        Response response;
        response.code = IdSuccess;
        client.Write(WriteResponse(response), Deadline(Limit));
        const Deadline deadline(Limit);
        asked = client.Read(&deadline).has_value();
    });
    EXPECT_FALSE(PingServer(stranger, Limit));
    served.wait();
    EXPECT_FALSE(asked) << "no request was sent to it";
}

TEST_F(ServerRequestsTest, AReadOrWriteThatFailsAtOnceIsNotWaitedFor)
{
    Handle server = CreatePipeInstance(L"\\\\.\\pipe\\" + Widen(identity), true);
    ASSERT_TRUE(server);
    const Handle client = OpenPipe(L"\\\\.\\pipe\\" + Widen(identity), Deadline(Limit));
    ASSERT_TRUE(client);
    server.reset();
    char byte = 0;
    PendingOperation reading;
    reading.Read(client.get(), &byte, 1);
    EXPECT_FALSE(reading.Finish(client.get(), INFINITE));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_BROKEN_PIPE));
    PendingOperation writing;
    writing.Write(client.get(), &byte, 1);
    EXPECT_FALSE(writing.Finish(client.get(), INFINITE));
}

TEST_F(ServerRequestsTest, ClientsThatMisbehaveDoNotStopTheServer)
{
    Connect(); // Connects and leaves.
    {
        PipeClient asks(Connect());
        Request request;
        request.id = 7;
        request.operation = "frob";
        const Deadline deadline(Limit);
        EXPECT_TRUE(asks.Write(WriteRequest(request), deadline));
        const std::optional<std::string> text = asks.Read(&deadline);
        ASSERT_TRUE(text);
        const std::optional<ServerMessage> message = ReadServerMessage(*text);
        ASSERT_TRUE(message && message->response);
        EXPECT_EQ(message->response->id, 7u);
        EXPECT_EQ(message->response->code, IdProtocolError);
    }
    for (const std::string& bytes :
         {std::string("\xFF\xFF\xFF\xFFx"), std::string("\2\0\0\0{}", 6), std::string("\5\0\0\0hello", 9)})
    {
        const Handle pipe = Connect();
        PendingOperation writing;
        writing.Write(pipe.get(), bytes.data(), static_cast<DWORD>(bytes.size()));
        EXPECT_TRUE(writing.Finish(pipe.get(), Limit));
        char byte = 0;
        PendingOperation reading;
        reading.Read(pipe.get(), &byte, 1);
        EXPECT_FALSE(reading.Finish(pipe.get(), Limit)) << "disconnected without a response";
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_BROKEN_PIPE));
    }
    const PipeClient silent(Connect()); // Sends nothing, and stays.
    EXPECT_TRUE(PingServer(processId, Limit));
}

TEST_F(ServerRequestsTest, ASilentClientIsDisconnected)
{
    PipeClient silent(Connect());
    const Deadline deadline(Limit);
    EXPECT_FALSE(silent.Read(&deadline));
    EXPECT_TRUE(PingServer(processId, Limit)) << "by a server that goes on, not by the end of its idle time";
}

TEST_F(ServerRequestsTest, ManySilentClientsKeepNobodyOut)
{
    std::vector<Handle> silent;
    for (int count = 0; count < 100; ++count)
    {
        silent.push_back(Connect());
        ASSERT_TRUE(silent.back()) << count;
    }
    EXPECT_TRUE(PingServer(processId, Limit));
}

TEST_F(ServerRequestsTest, AFrozenServerDoesNotRespondUntilItIsThawed)
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
    EXPECT_FALSE(processes.Quit(identity, 0)) << "asked, but frozen";
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

} // namespace

} // namespace Kestrany::Agent
