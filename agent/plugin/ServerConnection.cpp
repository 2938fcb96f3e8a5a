#include "plugin/ServerConnection.h"

#include <algorithm>
#include <utility>

#include "identity/IdentitySource.h"
#include "platform/ObjectNamespace.h"

namespace Kestrany::Agent {

namespace Events = IdentityServices::IdServicesConsts;

namespace {

using SteadyClock = std::chrono::steady_clock;

/// A server that dies sooner is not started again until somebody asks, or a fault would start servers for ever.
constexpr std::chrono::seconds QuickLoss{1};
constexpr int MaxQuickLosses = 5;

constexpr int ConnectTries = 5;

std::int64_t Count(std::chrono::milliseconds time)
{
    return time.count();
}

Response Refusal(IdErrorCode code)
{
    Response response;
    response.code = code;
    return response;
}

} // namespace

ServerConnection::ServerConnection(Parts parts) : parts_(std::move(parts)), processes_(parts_.log) {}

ServerConnection::~ServerConnection()
{
    Close();
}

void ServerConnection::Open()
{
    Lock lock(mutex_);
    AwaitOpen(lock, generation_);
}

Response ServerConnection::Ask(Request request)
{
    Lock lock(mutex_);
    const unsigned int generation = generation_;
    Response response = AskOnce(lock, request, generation);
    // The server that is started in its place knows all that this one had answered: asking again is safe.
    if (response.code == IdServerLost && generation_ == generation)
    {
        response = AskOnce(lock, request, generation);
        // The first one may have done it before it died.
        if (request.operation == Operations::Logout && response.code == IdNotLoggedIn)
            response.code = IdSuccess;
    }
    return response;
}

void ServerConnection::Close()
{
    const std::lock_guard closing(closing_);
    std::thread thread;
    {
        const Lock lock(mutex_);
        ends_ = true;
        ++generation_;
        if (pipe_)
            pipe_->Break();
        thread = std::move(thread_);
        changed_.notify_all();
    }
    if (thread.joinable())
        thread.join();
    const Lock lock(mutex_);
    ends_ = false;
    heard_ = {};
}

IdErrorCode ServerConnection::AwaitOpen(Lock& lock, unsigned int generation)
{
    if (ends_ || generation_ != generation)
        return IdServerLost;
    DropOtherServer();
    if (state_ == State::Open)
        return IdSuccess;
    wanted_ = true;
    const unsigned int before = attempts_;
    if (!thread_.joinable())
        thread_ = std::thread([this] { Run(); });
    changed_.notify_all();
    const bool ended = changed_.wait_for(
        lock, ConnectLimit, [&] { return state_ == State::Open || attempts_ != before || generation_ != generation; });
    if (generation_ != generation)
        return IdServerLost;
    if (state_ == State::Open)
        return IdSuccess;
    if (!ended)
        return IdServerTimedOut;
    // A connection that was there and is not any more is asked for again.
    return result_ == IdSuccess ? IdServerLost : result_;
}

Response ServerConnection::AskOnce(Lock& lock, Request& request, unsigned int generation)
{
    if (const IdErrorCode code = AwaitOpen(lock, generation); code != IdSuccess)
        return Refusal(code);
    const std::uint32_t id = request.id = nextId_++;
    const std::string message = WriteRequest(request);
    if (message.size() > MaxMessage)
        return Refusal(IdTextTooLong);
    pending_[id].limit = SteadyClock::now() + AnswerLimit;
    const std::shared_ptr<PipeClient> pipe = pipe_;
    lock.unlock();
    try
    {
        // Without success the pipe breaks, and the link's thread finds that out.
        pipe->Write(message, Deadline(Count(AnswerLimit)));
    }
    catch (...)
    {
        lock.lock();
        pending_.erase(id);
        throw;
    }
    lock.lock();
    return AwaitAnswer(lock, id);
}

Response ServerConnection::AwaitAnswer(Lock& lock, std::uint32_t id)
{
    Pending& pending = pending_[id];
    while (pending.outcome == Outcome::Waiting)
    {
        // The limit may be extended while it is waited for.
        if (changed_.wait_until(lock, pending.limit) == std::cv_status::timeout && SteadyClock::now() >= pending.limit)
            break;
    }
    Response response = Refusal(pending.outcome == Outcome::Waiting ? IdServerTimedOut : IdServerLost);
    if (pending.outcome == Outcome::Answered)
        response = std::move(pending.response);
    pending_.erase(id);
    return response;
}

void ServerConnection::DropOtherServer()
{
    if (state_ != State::Open || connected_.IsSameServer(parts_.target()))
        return;
    state_ = State::Connecting;
    wanted_ = true;
    pipe_->Break();
}

void ServerConnection::Run()
{
    int quickLosses = 0;
    Lock lock(mutex_);
    for (;;)
    {
        changed_.wait(lock, [this] { return wanted_ || ends_; });
        if (ends_)
            break;
        wanted_ = false;
        state_ = State::Connecting;
        lock.unlock();
        const bool opened = TryConnect();
        const auto since = SteadyClock::now();
        const bool lost = opened && ReadUntilLost();
        lock.lock();
        Fail();
        // What other hosts do, this one is to hear of, though nobody here may ask for long.
        quickLosses = lost && SteadyClock::now() - since < QuickLoss ? quickLosses + 1 : 0;
        if (quickLosses == MaxQuickLosses)
            quickLosses = 0;
        else if (lost)
            wanted_ = true;
    }
    Fail();
}

void ServerConnection::Fail()
{
    pipe_.reset();
    state_ = State::Idle;
    for (auto& [id, pending] : pending_)
    {
        if (pending.outcome == Outcome::Waiting)
            pending.outcome = Outcome::Lost;
    }
    changed_.notify_all();
}

bool ServerConnection::TryConnect() noexcept
{
    ServerTarget target;
    IdErrorCode code = IdServerUnavailable;
    try
    {
        target = parts_.target();
        code = Connect(target);
    }
    catch (const std::exception& error)
    {
        Report("No connection to the server", error);
    }
    const Lock lock(mutex_);
    ++attempts_;
    result_ = code;
    connected_ = std::move(target);
    state_ = code == IdSuccess ? State::Open : State::Idle;
    changed_.notify_all();
    return code == IdSuccess;
}

bool ServerConnection::ReadUntilLost() noexcept
{
    try
    {
        return !ReadOn(*pipe_); // Nobody else replaces it.
    }
    catch (const std::exception& error)
    {
        Report("The connection to the server is given up", error);
        return true;
    }
}

void ServerConnection::Report(const char* what, const std::exception& error) const noexcept
{
    try
    {
        parts_.log(TALIXLog::Error, std::string(what) + ": " + error.what());
    }
    catch (const std::exception&)
    {
        // Nowhere is left to say so.
    }
}

IdErrorCode ServerConnection::Connect(const ServerTarget& target)
{
    if (target.executable.empty())
    {
        parts_.log(TALIXLog::Error, "No server: no server application was found");
        return IdServerUnavailable;
    }
    const Deadline deadline(Count(ConnectLimit) * 3 / 4); // Who waits gets to hear of the end.
    // A server may end, or be killed, between any two steps.
    for (int tries = 0; tries < ConnectTries && deadline.Left() > 0 && !Ends(); ++tries)
    {
        if (const std::optional<IdErrorCode> code = ConnectOnce(target, deadline))
            return *code;
    }
    return IdServerUnavailable;
}

std::optional<IdErrorCode> ServerConnection::ConnectOnce(const ServerTarget& target, const Deadline& deadline)
{
    const std::wstring name = HostPipeName(target.processIdentity);
    Handle file = OpenPipe(name, deadline);
    if (!file)
    {
        std::int64_t processId = 0;
        if (!processes_.Start(target.executable, target.processIdentity, target.arguments, deadline.Left(), processId))
            return IdServerUnavailable;
        file = OpenPipe(name, deadline);
    }
    if (!file)
        return std::nullopt;
    if (const std::string reason = WhyNotTrusted(file.get(), target.executable); !reason.empty())
    {
        parts_.log(TALIXLog::Error, "The server of " + target.processIdentity + " is not used: " + reason);
        return IdServerUnavailable;
    }
    const auto pipe = std::make_shared<PipeClient>(std::move(file));
    if (!Adopt(pipe))
        return IdServerLost;
    return Attach(*pipe, target, deadline);
}

bool ServerConnection::Ends()
{
    const Lock lock(mutex_);
    return ends_;
}

/// From now on, Close can break it.
bool ServerConnection::Adopt(const std::shared_ptr<PipeClient>& pipe)
{
    const Lock lock(mutex_);
    if (!ends_)
        pipe_ = pipe;
    return !ends_;
}

std::optional<IdErrorCode> ServerConnection::Attach(PipeClient& pipe, const ServerTarget& target,
                                                    const Deadline& connecting)
{
    Request request;
    request.operation = Operations::Attach;
    request.caller.server = parts_.server();
    request.arguments["protocol"] = ProtocolVersion;
    request.arguments["identity"] = target.serverIdentity;
    const Deadline deadline(std::min<std::int64_t>(Count(AnswerLimit), connecting.Left()));
    if (!pipe.Write(WriteRequest(request), deadline))
        return std::nullopt;
    std::vector<LoginEvent> events; // What happened after the answer was made, and overtook it.
    while (const std::optional<std::string> text = pipe.Read(&deadline))
    {
        const std::optional<ServerMessage> message = ReadServerMessage(*text);
        if (!message || message->shutdown)
            return std::nullopt;
        if (message->event)
            events.push_back(*message->event);
        if (!message->response)
            continue; // It may take its time.
        const Response& response = *message->response;
        if (response.code != IdSuccess)
        {
            parts_.log(TALIXLog::Error,
                       "The server does not take this host: result " + std::to_string(static_cast<int>(response.code)));
            return response.code;
        }
        HearAtConnection(target.serverIdentity, request.caller.server,
                         response.result["restored"] == Json::Value(true));
        for (const LoginEvent& event : events)
            Hear(event);
        return IdSuccess;
    }
    return std::nullopt;
}

void ServerConnection::HearAtConnection(const std::string& identity, Server server, bool signedIn)
{
    const bool was = heard_.identity == identity && heard_.signedIn.count(server) != 0;
    heard_ = {identity, {}};
    if (signedIn)
        Hear({Events::LoginRestored, server, {}, IdSuccess});
    else if (was)
        Hear({Events::LoggedOut, server, {}, IdSuccess});
}

void ServerConnection::Hear(const LoginEvent& event)
{
    if (event.kind == Events::LoggedIn || event.kind == Events::LoginRestored)
        heard_.signedIn.insert(event.server);
    if (event.kind == Events::LoggedOut)
        heard_.signedIn.erase(event.server);
    parts_.onEvent(event);
}

bool ServerConnection::ReadOn(PipeClient& pipe)
{
    while (const std::optional<std::string> text = pipe.Read(nullptr))
    {
        const std::optional<ServerMessage> message = ReadServerMessage(*text);
        if (!message)
        {
            parts_.log(TALIXLog::Error, "The server sent what is no message; the connection to it ends");
            break;
        }
        if (message->shutdown)
            return true;
        Take(*message);
    }
    return false;
}

void ServerConnection::Take(const ServerMessage& message)
{
    if (message.event)
        Hear(*message.event);
    const Lock lock(mutex_);
    const std::uint32_t id = message.response            ? message.response->id
                             : message.deadlineExtension ? message.deadlineExtension->id
                                                         : 0;
    const auto found = pending_.find(id);
    if (found == pending_.end())
        return; // Nobody waits any more.
    if (message.deadlineExtension)
        found->second.limit =
            SteadyClock::now() + std::min<std::chrono::milliseconds>(
                                     std::chrono::milliseconds(message.deadlineExtension->milliseconds), MaxExtension);
    if (message.response)
    {
        found->second.response = *message.response;
        found->second.outcome = Outcome::Answered;
    }
    changed_.notify_all();
}

} // namespace Kestrany::Agent
