// How calls and the connection's own thread share the reading of one connection.

#include <gtest/gtest.h>

#include <condition_variable>
#include <deque>
#include <future>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "connection/Conversation.h"
#include "support/Patience.h"

namespace Kestrany::Agent {

namespace {

namespace Events = IdentityServices::IdServicesConsts;
using namespace std::chrono_literals;
using std::chrono::milliseconds;

constexpr milliseconds Limit = OrlindexTest::Patience;

/// The server's end, and what the conversation reports.
class ConversationTest : public testing::Test
{
protected:
    ~ConversationTest() override
    {
        conversation.Break();
        if (own.valid())
            own.wait();
        conversation.Close();
    }

    Conversation::Parts MakeParts()
    {
        Conversation::Parts parts;
        parts.write = [this](const std::string& message, milliseconds) { Write(message); };
        parts.read = [this](std::optional<milliseconds> limit) { return Read(limit); };
        parts.breakOff = [this] { EndConnection(); };
        parts.onEvent = [this](const LoginEvent& event) {
            const std::lock_guard lock(mutex);
            if (eventFails)
                throw std::runtime_error("no memory");
            events.push_back(static_cast<int>(event.status));
            changed.notify_all();
        };
        parts.onProblem = [this](const std::string& problem) {
            const std::lock_guard lock(mutex);
            problems.push_back(problem);
        };
        return parts;
    }

    void Write(const std::string& message)
    {
        std::string problem;
        const std::optional<Request> request = ReadRequest(message, problem);
        ASSERT_TRUE(request) << problem;
        {
            const std::lock_guard lock(mutex);
            ++requests;
            changed.notify_all();
        }
        if (echoes)
            Respond(request->id);
    }

    Conversation::Received Read(std::optional<milliseconds> limit)
    {
        std::unique_lock lock(mutex);
        EXPECT_FALSE(isRead) << "two threads read";
        isRead = true;
        limits.push_back(limit);
        lastRead = Conversation::Clock::now();
        changed.notify_all();
        changed.wait_for(lock, limit.value_or(Limit), [this] { return hasEnded || !messages.empty(); });
        isRead = false;
        if (messages.empty())
            return {std::nullopt, hasEnded};
        Conversation::Received received{messages.front(), false};
        messages.pop_front();
        return received;
    }

    void Send(const std::string& message)
    {
        const std::lock_guard lock(mutex);
        messages.push_back(message);
        changed.notify_all();
    }
    void Respond(std::uint32_t id) { Send(WriteResponse({id, IdSuccess})); }
    void SendEvent(int number) { Send(WriteEvent({Events::LoggedIn, TALIX_SERVER_STAGING, {}, IdErrorCode(number)})); }
    void EndConnection()
    {
        const std::lock_guard lock(mutex);
        hasEnded = true;
        changed.notify_all();
    }
    template <class Condition>
    bool Await(Condition condition)
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, Limit, condition);
    }
    bool AwaitRequests(int count)
    {
        return Await([&] { return requests == count; });
    }
    bool AwaitReads(std::size_t count)
    {
        return Await([&] { return limits.size() >= count; });
    }
    bool AwaitEvents(std::size_t count)
    {
        return Await([&] { return events.size() == count; });
    }

    IdErrorCode Ask(milliseconds limit = Limit)
    {
        Request request;
        request.operation = Operations::GetAccessToken;
        return conversation.Ask(request, limit).code;
    }
    std::future<IdErrorCode> Call()
    {
        return std::async(std::launch::async, [this] { return Ask(); });
    }
    void StartOwnThread()
    {
        own = std::async(std::launch::async, [this] { return conversation.ReadUntilEnd(); });
    }

    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::string> messages;
    bool hasEnded = false;
    bool isRead = false;
    int requests = 0;
    std::vector<std::optional<milliseconds>> limits; // Of the reads.
    Conversation::Clock::time_point lastRead;        // The beginning of the last one.
    std::vector<int> events;                         // Their numbers.
    std::vector<std::string> problems;
    bool eventFails = false;
    bool echoes = false;
    Conversation conversation{MakeParts()};
    std::future<Conversation::End> own;
};

TEST_F(ConversationTest, ACallReadsItsResponseItself)
{
    echoes = true;
    EXPECT_EQ(Ask(), IdSuccess) << "no other thread is there";
    EXPECT_EQ(Ask(), IdSuccess);
}

TEST_F(ConversationTest, AnEventArrivesBeforeALaterResponse)
{
    echoes = true;
    SendEvent(1);
    EXPECT_EQ(Ask(), IdSuccess);
    EXPECT_EQ(events, std::vector<int>{1});
}

TEST_F(ConversationTest, WithoutACallTheOwnThreadReads)
{
    StartOwnThread();
    SendEvent(1);
    EXPECT_TRUE(AwaitEvents(1));
}

TEST_F(ConversationTest, TheOwnThreadReadsForACallThatFindsItReading)
{
    StartOwnThread();
    ASSERT_TRUE(AwaitReads(1));
    echoes = true;
    EXPECT_EQ(Ask(), IdSuccess);
}

TEST_F(ConversationTest, ACallTakesOverReadingAtTheNextMessage)
{
    StartOwnThread();
    ASSERT_TRUE(AwaitReads(1));
    auto call = Call();
    ASSERT_TRUE(AwaitRequests(1));
    bool isCalls = false; // Only the reads of calls have limits.
    // The call may begin to wait a little after its request.
    for (std::size_t event = 1; event <= 1000 && !isCalls; ++event)
    {
        SendEvent(static_cast<int>(event));
        ASSERT_TRUE(AwaitReads(event + 1));
        const std::lock_guard lock(mutex);
        isCalls = limits.back().has_value();
    }
    EXPECT_TRUE(isCalls);
    Respond(1);
    EXPECT_EQ(call.get(), IdSuccess);
}

TEST_F(ConversationTest, AfterAResponseTheOwnThreadLeavesReadingToTheNextCall)
{
    StartOwnThread();
    ASSERT_TRUE(AwaitReads(1));
    const auto begin = Conversation::Clock::now();
    echoes = true;
    EXPECT_EQ(Ask(), IdSuccess);
    ASSERT_TRUE(AwaitReads(2));
    const std::lock_guard lock(mutex);
    EXPECT_GE(lastRead - begin, Conversation::Pause);
}

TEST_F(ConversationTest, AfterACallTheOwnThreadReadsAgain)
{
    echoes = true;
    EXPECT_EQ(Ask(), IdSuccess);
    StartOwnThread();
    SendEvent(1);
    EXPECT_TRUE(AwaitEvents(1));
    EXPECT_EQ(Ask(), IdSuccess);
    SendEvent(2);
    EXPECT_TRUE(AwaitEvents(2));
}

TEST_F(ConversationTest, AfterALongCallTheOwnThreadReadsAgain)
{
    auto call = Call();
    ASSERT_TRUE(AwaitReads(1));
    StartOwnThread();
    std::this_thread::sleep_for(5 * Conversation::Pause); // Then it waits for the end of the call.
    Respond(1);
    EXPECT_EQ(call.get(), IdSuccess);
    SendEvent(1);
    EXPECT_TRUE(AwaitEvents(1));
}

TEST_F(ConversationTest, ACallReadsTheResponsesOfOthersToo)
{
    auto first = Call();
    ASSERT_TRUE(AwaitReads(1));
    auto second = Call();
    ASSERT_TRUE(AwaitRequests(2));
    Respond(2);
    EXPECT_EQ(second.get(), IdSuccess);
    Respond(1);
    EXPECT_EQ(first.get(), IdSuccess);
}

TEST_F(ConversationTest, WhenTheCallThatReadsEndsAnotherOneReads)
{
    auto first = Call();
    ASSERT_TRUE(AwaitReads(1));
    auto second = Call();
    ASSERT_TRUE(AwaitRequests(2));
    Respond(1);
    EXPECT_EQ(first.get(), IdSuccess);
    Respond(2);
    EXPECT_EQ(second.get(), IdSuccess);
}

TEST_F(ConversationTest, ACallEndsAtItsLimit)
{
    EXPECT_EQ(Ask(50ms), IdServerTimedOut);
    Respond(1); // Too late: nobody waits for it.
    Respond(2);
    EXPECT_EQ(Ask(), IdSuccess);
}

TEST_F(ConversationTest, ACallThatAnotherReadsForEndsAtItsLimit)
{
    StartOwnThread();
    ASSERT_TRUE(AwaitReads(1));
    EXPECT_EQ(Ask(50ms), IdServerTimedOut);
}

TEST_F(ConversationTest, TheServerExtendsTheLimit)
{
    auto call = Call();
    ASSERT_TRUE(AwaitReads(1));
    Send(WriteDeadlineExtension({1, static_cast<std::uint32_t>(2 * Limit.count())}));
    ASSERT_TRUE(AwaitReads(2));
    Respond(1);
    EXPECT_EQ(call.get(), IdSuccess);
    EXPECT_LE(limits.front(), Limit);
    EXPECT_GT(limits.back(), Limit);
}

TEST_F(ConversationTest, AnExtensionHasABound)
{
    auto call = Call();
    ASSERT_TRUE(AwaitReads(1));
    Send(WriteDeadlineExtension({1, UINT32_MAX}));
    ASSERT_TRUE(AwaitReads(2));
    Respond(1);
    EXPECT_EQ(call.get(), IdSuccess);
    EXPECT_LE(limits.back(), Conversation::MaxDeadlineExtension);
}

TEST_F(ConversationTest, ALostConnectionEndsCallsOnceItIsClosed)
{
    auto call = Call();
    ASSERT_TRUE(AwaitReads(1));
    EndConnection();
    EXPECT_EQ(conversation.ReadUntilEnd(), Conversation::End::Lost);
    // A call that ended sooner would be repeated on the old connection.
    EXPECT_EQ(call.wait_for(50ms), std::future_status::timeout);
    conversation.Close();
    EXPECT_EQ(call.get(), IdServerLost);
    EXPECT_EQ(Ask(), IdServerLost);
    EXPECT_EQ(requests, 1) << "nothing is sent after the end";
}

TEST_F(ConversationTest, ACallReadsThatTheServerShutsDown)
{
    auto call = Call();
    ASSERT_TRUE(AwaitReads(1));
    StartOwnThread();
    Send(WriteShutdown());
    EXPECT_EQ(own.get(), Conversation::End::Shutdown);
    conversation.Close();
    EXPECT_EQ(call.get(), IdServerLost);
}

TEST_F(ConversationTest, AnInvalidMessageEndsTheConnection)
{
    Send("{}");
    EXPECT_EQ(conversation.ReadUntilEnd(), Conversation::End::Lost);
    EXPECT_EQ(problems, std::vector<std::string>{"The server sent an invalid message; the connection is closed"});
}

TEST_F(ConversationTest, AnExceptionEndsTheConnection)
{
    eventFails = true;
    SendEvent(1);
    EXPECT_EQ(conversation.ReadUntilEnd(), Conversation::End::Lost);
    EXPECT_EQ(problems, std::vector<std::string>{"The connection to the server is closed: no memory"});
}

TEST_F(ConversationTest, BreakEndsTheOwnThread)
{
    StartOwnThread();
    ASSERT_TRUE(AwaitReads(1));
    conversation.Break();
    EXPECT_EQ(own.get(), Conversation::End::Lost);
}

TEST_F(ConversationTest, BreakEndsTheOwnThreadWhileACallReads)
{
    auto call = Call();
    ASSERT_TRUE(AwaitReads(1));
    StartOwnThread();
    conversation.Break();
    EXPECT_EQ(own.get(), Conversation::End::Lost);
    conversation.Close();
    EXPECT_EQ(call.get(), IdServerLost);
}

TEST_F(ConversationTest, ARequestThatIsTooLongIsNotSent)
{
    Request request;
    request.operation = std::string(MaxMessage, 'x');
    EXPECT_EQ(conversation.Ask(request, Limit).code, IdTextTooLong);
    EXPECT_EQ(requests, 0);
}

TEST_F(ConversationTest, ManyCallsAndEventsAtOnce)
{
    constexpr int calls = 200;
    constexpr int threads = 4;
    echoes = true;
    StartOwnThread();
    std::vector<std::future<int>> callers;
    for (int thread = 0; thread < threads; ++thread)
    {
        callers.push_back(std::async(std::launch::async, [this] {
            int succeeded = 0;
            for (int call = 0; call < calls; ++call)
                succeeded += Ask() == IdSuccess ? 1 : 0;
            return succeeded;
        }));
    }
    std::vector<int> sent;
    for (int number = 0; number < calls; ++number)
    {
        SendEvent(number);
        sent.push_back(number);
    }
    for (auto& caller : callers)
        EXPECT_EQ(caller.get(), calls);
    EXPECT_TRUE(AwaitEvents(sent.size()));
    EXPECT_EQ(events, sent);
}

} // namespace

} // namespace Kestrany::Agent
