#ifndef AGENT_CONNECTION_CONVERSATION_H
#define AGENT_CONNECTION_CONVERSATION_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "connection/Message.h"

namespace Kestrany::Agent {

/// The messages of one connection to a server process, as a host sees them. One thread at a time reads. A thread that
/// waits for a response reads itself, so that a response wakes one thread, not two. While nobody waits, the
/// connection's own thread reads. Any thread may call.
class Conversation
{
public:
    using Clock = std::chrono::steady_clock;
    /// The longest deadline extension that a host accepts.
    static constexpr std::chrono::milliseconds MaxDeadlineExtension{15 * 60'000};
    /// How long after a response the connection's own thread leaves reading to the next call. An event is delivered so
    /// much later at most.
    static constexpr std::chrono::milliseconds Pause{10};

    struct Received
    {
        std::optional<std::string> message;
        /// Without a message: whether the connection has ended. Otherwise the limit has passed.
        bool isOver = false;
    };
    struct Parts
    {
        /// A failure ends the connection, which `read` then tells.
        std::function<void(const std::string& message, std::chrono::milliseconds limit)> write;
        /// Waits for the next message; nullopt: without a limit.
        std::function<Received(std::optional<std::chrono::milliseconds> limit)> read;
        /// Ends the connection: `read` and `write` return soon.
        std::function<void()> breakOff;
        /// Called by the thread that reads, before responses that the server sent later.
        std::function<void(const LoginEvent&)> onEvent;
        /// Must not throw.
        std::function<void(const std::string& problem)> onProblem;
    };
    enum class End
    {
        Lost,
        Shutdown ///< Announced by the server.
    };

    explicit Conversation(Parts parts) : parts_(std::move(parts)) {}
    Conversation(const Conversation&) = delete;
    Conversation& operator=(const Conversation&) = delete;

    /// Returns the server's response; IdServerTimedOut after the limit, unless the server extends it; IdServerLost
    /// after Close; IdTextTooLong for a request that is too long to be sent. Sets the request's ID.
    Response Ask(Request& request, std::chrono::milliseconds limit);
    /// For the connection's own thread: returns when the connection has ended and no other thread reads. Calls wait for
    /// Close, or their limits.
    End ReadUntilEnd();
    /// Ends the connection. ReadUntilEnd then returns.
    void Break();
    /// Ends the calls that still wait, and further ones.
    void Close();

private:
    enum class Outcome
    {
        Waiting,
        Responded,
        Lost
    };
    struct Pending
    {
        Outcome outcome = Outcome::Waiting;
        Clock::time_point limit;
        Response response;
    };
    using Lock = std::unique_lock<std::mutex>;

    Response Await(Lock& lock, std::uint32_t id);
    void AwaitOwnTurn(Lock& lock);
    /// Whether a call reads, or is about to.
    bool IsTaken() const { return isRead_ || (!isOver_ && calls_ > 0); }
    bool IsPause() const { return Clock::now() < lastResponse_ + Pause; }
    /// Reads until the response of a call has come or its limit has passed. Nobody else has to wake meanwhile.
    void ReadFor(Lock& lock, const Pending& pending);
    void StopReading(Lock& lock);
    /// Without the lock while it waits. The caller has set isRead_.
    void ReadOne(Lock& lock, std::optional<Clock::time_point> limit);
    std::optional<ServerMessage> Receive(std::optional<Clock::time_point> limit, bool& isOver);
    void Handle(ServerMessage message);

    const Parts parts_;
    std::atomic<std::uint32_t> nextId_ = 1;
    std::mutex mutex_;
    std::condition_variable changed_; ///< For calls.
    std::condition_variable ownTurn_; ///< For the connection's own thread.
    bool isRead_ = false;             ///< A thread reads.
    bool isOver_ = false;             ///< Nothing more is read.
    bool isClosed_ = false;
    std::size_t calls_ = 0;       ///< That wait for their responses.
    bool ownThreadWaits_ = false; ///< It wants to know when no call reads any more.
    End end_ = End::Lost;
    Clock::time_point lastResponse_{};
    std::map<std::uint32_t, Pending> pending_;
};

} // namespace Kestrany::Agent

#endif
