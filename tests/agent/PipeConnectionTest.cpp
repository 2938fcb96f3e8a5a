// Both ends of a pipe within one process.

#include <gtest/gtest.h>

#include <future>
#include <vector>

#include "Environment.h"
#include "connection/Pipe.h"
#include "connection/PipeConnection.h"
#include "platform/Base.h"
#include "support/Patience.h"

namespace Kestrany::Agent {

namespace {

constexpr std::int64_t Limit = OrlindexTest::PatienceMilliseconds;

/// Returns each message so many times.
class Echo final : public MessageHandler
{
public:
    Echo(Send send, int count) : send_(std::move(send)), count_(count) {}

    bool Receive(const std::string& message) override
    {
        for (int index = 0; index < count_; ++index)
            send_(message);
        return message != "bad";
    }
    bool IsGivenUp() const override { return false; }

private:
    const Send send_;
    const int count_;
};

class PipeConnectionTest : public testing::Test
{
protected:
    /// A connection, and the client's end of it.
    struct Pair
    {
        Pair(const std::wstring& name, HANDLE transferred, int echoes)
            : server(CreatePipeInstance(name, false)), client(OpenPipe(name, Deadline(Limit))),
              connection(std::move(server), transferred,
                         [&](MessageHandler::Send send) { return std::make_unique<Echo>(std::move(send), echoes); })
        {
        }

        Handle server;
        PipeClient client;
        PipeConnection connection;
    };

    std::unique_ptr<Pair> Connect(int echoes = 1) const
    {
        return std::make_unique<Pair>(L"\\\\.\\pipe\\" + Widen(OwnIdentity("Pipe")), transferred.get(), echoes);
    }
    bool AwaitTransfer() const { return WaitForSingleObject(transferred.get(), Limit) == WAIT_OBJECT_0; }
    bool IsSignalled() const { return WaitForSingleObject(transferred.get(), 0) == WAIT_OBJECT_0; }
    /// Handles what is transferred until a client's work is done.
    template <class Result>
    void ServeUntil(PipeConnection& connection, const std::future<Result>& done) const
    {
        while (done.wait_for(std::chrono::seconds(0)) != std::future_status::ready && !connection.IsOver())
        {
            WaitForSingleObject(transferred.get(), connection.HasTransfers() ? 0 : 10);
            connection.HandleTransfers();
        }
    }

    const Deadline deadline{Limit};
    const Handle transferred{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
};

TEST_F(PipeConnectionTest, AMessageIsHandledAfterTheEvent)
{
    const auto pair = Connect();
    ASSERT_TRUE(pair->client.Write("hello", deadline));
    ASSERT_TRUE(AwaitTransfer());
    ASSERT_TRUE(pair->connection.HasTransfers());
    pair->connection.HandleTransfers();
    EXPECT_FALSE(pair->connection.HasTransfers());
    EXPECT_EQ(pair->client.Read(&deadline), "hello");
    EXPECT_FALSE(IsSignalled()) << "neither the response nor the next read has ended since";
}

TEST_F(PipeConnectionTest, MessagesAreHeldUntilTheRelease)
{
    const auto pair = Connect(3);
    pair->connection.Hold();
    ASSERT_TRUE(pair->client.Write("hello", deadline));
    ASSERT_TRUE(AwaitTransfer());
    pair->connection.HandleTransfers();
    const Deadline now(0);
    EXPECT_EQ(pair->client.Read(&now), std::nullopt);
    pair->connection.Release();
    EXPECT_EQ(pair->client.Read(&deadline), "hello");
    EXPECT_EQ(pair->client.Read(&now), "hello") << "it came with the first one";
    EXPECT_EQ(pair->client.Read(&now), "hello");
    EXPECT_EQ(pair->client.Read(&now), std::nullopt);
}

TEST_F(PipeConnectionTest, ATransferIsFoundAfterItsSignalIsGone)
{
    const auto first = Connect();
    ASSERT_TRUE(first->client.Write("hello", deadline));
    ASSERT_TRUE(AwaitTransfer());
    const auto second = Connect(); // Begins to read, which resets the event.
    EXPECT_FALSE(IsSignalled());
    EXPECT_TRUE(first->connection.HasTransfers());
    EXPECT_FALSE(second->connection.HasTransfers());
}

TEST_F(PipeConnectionTest, MessagesThatDoNotFitIntoThePipeWaitForTheClient)
{
    const std::string message(MaxMessage, 'x');
    const auto pair = Connect(3);
    auto read = std::async(std::launch::async, [&] {
        std::vector<std::optional<std::string>> texts;
        if (pair->client.Write(message, deadline))
        {
            for (int count = 0; count < 3; ++count)
                texts.push_back(pair->client.Read(&deadline));
        }
        return texts == std::vector<std::optional<std::string>>(3, message);
    });
    ServeUntil(pair->connection, read);
    EXPECT_TRUE(read.get());
    EXPECT_FALSE(pair->connection.IsOver());
}

TEST_F(PipeConnectionTest, AConnectionEndsDuringAReadAndAWrite)
{
    auto pair = Connect(8);
    const auto sent =
        std::async(std::launch::async, [&] { return pair->client.Write(std::string(MaxMessage, 'x'), deadline); });
    ServeUntil(pair->connection, sent);
    pair.reset(); // Returns although the client reads nothing.
}

TEST_F(PipeConnectionTest, AClientThatViolatesTheProtocolGetsItsResponse)
{
    const auto pair = Connect();
    ASSERT_TRUE(pair->client.Write("bad", deadline));
    ASSERT_TRUE(AwaitTransfer());
    pair->connection.HandleTransfers();
    EXPECT_TRUE(pair->connection.IsOver());
    EXPECT_EQ(pair->client.Read(&deadline), "bad");
}

TEST_F(PipeConnectionTest, APipeIsBrokenWithoutItsServer)
{
    const std::wstring name = L"\\\\.\\pipe\\" + Widen(OwnIdentity("Broken"));
    Handle server = CreatePipeInstance(name, false);
    const Handle client = OpenPipe(name, deadline);
    ASSERT_TRUE(client);
    EXPECT_FALSE(IsBroken(client.get()));
    server.reset();
    EXPECT_TRUE(IsBroken(client.get()));
}

TEST_F(PipeConnectionTest, AConnectionEndsWhenTheClientLeaves)
{
    const std::wstring name = L"\\\\.\\pipe\\" + Widen(OwnIdentity("Pipe"));
    Handle server = CreatePipeInstance(name, false);
    Handle client = OpenPipe(name, deadline);
    PipeConnection connection(std::move(server), transferred.get(),
                              [](MessageHandler::Send send) { return std::make_unique<Echo>(std::move(send), 1); });
    EXPECT_FALSE(connection.IsOver());
    client.reset();
    ASSERT_TRUE(AwaitTransfer());
    connection.HandleTransfers();
    EXPECT_TRUE(connection.IsOver());
}

TEST_F(PipeConnectionTest, AReadAfterATimeOutGoesOn)
{
    const auto pair = Connect();
    const Deadline soon(50);
    EXPECT_EQ(pair->client.Read(&soon), std::nullopt);
    EXPECT_FALSE(pair->client.IsOver());
    ASSERT_TRUE(pair->client.Write("hello", deadline));
    ASSERT_TRUE(AwaitTransfer());
    pair->connection.HandleTransfers();
    EXPECT_EQ(pair->client.Read(&deadline), "hello");
    pair->client.Break();
    EXPECT_EQ(pair->client.Read(&deadline), std::nullopt);
    EXPECT_TRUE(pair->client.IsOver());
}

} // namespace

} // namespace Kestrany::Agent
