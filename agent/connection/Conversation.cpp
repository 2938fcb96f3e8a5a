#include "connection/Conversation.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace Kestrany::Agent {

namespace {

using std::chrono::milliseconds;

Response Refusal(IdErrorCode code)
{
    Response response;
    response.code = code;
    return response;
}

/// Rounded up: a read that ended a little before its limit would be repeated.
milliseconds Until(Conversation::Clock::time_point limit)
{
    const auto left = std::chrono::ceil<milliseconds>(limit - Conversation::Clock::now());
    return std::max(left, milliseconds::zero());
}

} // namespace

Response Conversation::Ask(Request& request, milliseconds limit)
{
    const std::uint32_t id = request.id = nextId_++;
    const std::string message = WriteRequest(request);
    if (message.size() > MaxMessage)
        return Refusal(IdTextTooLong);
    Lock lock(mutex_);
    if (isClosed_)
        return Refusal(IdServerLost);
    pending_[id].limit = Clock::now() + limit;
    lock.unlock();
    try
    {
        parts_.write(message, limit);
    }
    catch (...)
    {
        lock.lock();
        pending_.erase(id);
        throw;
    }
    lock.lock();
    return Await(lock, id);
}

Response Conversation::Await(Lock& lock, std::uint32_t id)
{
    Pending& pending = pending_[id];
    ++calls_;
    // The deadline may be extended meanwhile.
    while (pending.outcome == Outcome::Waiting && Clock::now() < pending.limit)
    {
        if (isRead_ || isOver_)
            changed_.wait_until(lock, pending.limit);
        else
            ReadFor(lock, pending);
    }
    Response response = Refusal(pending.outcome == Outcome::Waiting ? IdServerTimedOut : IdServerLost);
    if (pending.outcome == Outcome::Responded)
        response = std::move(pending.response);
    pending_.erase(id);
    if (--calls_ == 0 && ownThreadWaits_)
        ownTurn_.notify_one();
    return response;
}

Conversation::End Conversation::ReadUntilEnd()
{
    Lock lock(mutex_);
    for (;;)
    {
        AwaitOwnTurn(lock);
        if (isOver_)
            return end_;
        isRead_ = true;
        do
            ReadOne(lock, std::nullopt);
        while (!isOver_ && calls_ == 0 && !IsPause()); // A call that waits takes over.
        StopReading(lock);
    }
}

void Conversation::AwaitOwnTurn(Lock& lock)
{
    std::optional<Clock::time_point> seen;
    while (IsTaken() || (!isOver_ && IsPause()))
    {
        if (IsTaken() && (isOver_ || seen == lastResponse_))
        {
            // The call takes long. Calls that follow one another quickly must not wake this thread each time.
            ownThreadWaits_ = true;
            ownTurn_.wait(lock, [this] { return !IsTaken(); });
            ownThreadWaits_ = false;
            continue;
        }
        seen = lastResponse_;
        ownTurn_.wait_until(lock, std::max(Clock::now(), lastResponse_) + Pause);
    }
}

void Conversation::Break()
{
    {
        const Lock lock(mutex_);
        isOver_ = true;
    }
    parts_.breakOff();
    ownTurn_.notify_one();
}

void Conversation::Close()
{
    const Lock lock(mutex_);
    isOver_ = true;
    isClosed_ = true;
    for (auto& [id, pending] : pending_)
    {
        if (pending.outcome == Outcome::Waiting)
            pending.outcome = Outcome::Lost;
    }
    changed_.notify_all();
}

void Conversation::ReadFor(Lock& lock, const Pending& pending)
{
    isRead_ = true;
    for (;;)
    {
        const Clock::time_point last = lastResponse_;
        ReadOne(lock, pending.limit);
        if (isOver_ || pending.outcome != Outcome::Waiting || Clock::now() >= pending.limit)
            break;
        if (lastResponse_ != last)
            changed_.notify_all(); // It is another call's.
    }
    StopReading(lock);
}

void Conversation::StopReading(Lock& lock)
{
    isRead_ = false;
    const bool isOver = isOver_;
    lock.unlock(); // The threads that wake need it.
    // One of the other calls reads on.
    changed_.notify_all();
    if (isOver)
        ownTurn_.notify_one();
    lock.lock();
}

void Conversation::ReadOne(Lock& lock, std::optional<Clock::time_point> limit)
{
    lock.unlock();
    bool isOver = false;
    std::optional<ServerMessage> message = Receive(limit, isOver);
    lock.lock();
    if (message && message->shutdown)
        end_ = End::Shutdown;
    else if (message)
        Handle(std::move(*message));
    isOver_ = isOver_ || isOver;
}

std::optional<ServerMessage> Conversation::Receive(std::optional<Clock::time_point> limit, bool& isOver)
{
    try
    {
        const Received received = parts_.read(limit ? std::optional(Until(*limit)) : std::nullopt);
        isOver = received.isOver;
        if (!received.message)
            return std::nullopt;
        std::optional<ServerMessage> message = ReadServerMessage(*received.message);
        isOver = !message || message->shutdown;
        if (!message)
            parts_.onProblem("The server sent an invalid message; the connection is closed");
        else if (message->event)
            parts_.onEvent(*message->event);
        return message;
    }
    catch (const std::exception& error)
    {
        isOver = true;
        parts_.onProblem(std::string("The connection to the server is closed: ") + error.what());
        return std::nullopt;
    }
}

void Conversation::Handle(ServerMessage message)
{
    if (message.response)
        lastResponse_ = Clock::now();
    const std::uint32_t id = message.response            ? message.response->id
                             : message.deadlineExtension ? message.deadlineExtension->id
                                                         : 0;
    const auto found = pending_.find(id);
    if (found == pending_.end())
        return; // The caller no longer waits.
    if (message.deadlineExtension)
        found->second.limit =
            Clock::now() +
            std::min<milliseconds>(milliseconds(message.deadlineExtension->milliseconds), MaxDeadlineExtension);
    if (message.response)
    {
        found->second.response = std::move(*message.response);
        found->second.outcome = Outcome::Responded;
    }
}

} // namespace Kestrany::Agent
