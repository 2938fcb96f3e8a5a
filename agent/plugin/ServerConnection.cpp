#include "plugin/ServerConnection.h"

#include <algorithm>
#include <utility>

#include "identity/IdentitySource.h"
#include "platform/ObjectNamespace.h"

namespace Kestrany::Agent {

namespace Events = IdentityServices::IdServicesConsts;

namespace {

using SteadyClock = std::chrono::steady_clock;

/// A server process that dies sooner is started again only by a call: a fault could otherwise start processes for ever.
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

ServerConnection::Channel::Channel(Handle file, ServerConnection& owner)
    : pipe(std::move(file)),
      conversation({[this](const std::string& message, std::chrono::milliseconds limit) {
                        pipe.Write(message, Deadline(Count(limit)));
                    },
                    [this](std::optional<std::chrono::milliseconds> limit) {
                        const Deadline deadline(limit ? Count(*limit) : 0);
                        Conversation::Received received;
                        received.message = pipe.Read(limit ? &deadline : nullptr);
                        received.isOver = !received.message && pipe.IsOver();
                        return received;
                    },
                    [this] { pipe.Break(); }, [&owner](const LoginEvent& event) { owner.HandleEvent(event); },
                    [&owner](const std::string& problem) { owner.Report(problem); }})
{
}

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
    // A new server process knows everything that the lost one had responded to: repeating the request is safe.
    if (response.code == IdServerLost && generation_ == generation)
    {
        response = AskOnce(lock, request, generation);
        // The lost process may have performed the logout.
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
        stopping_ = true;
        ++generation_;
        if (channel_)
            channel_->conversation.Break();
        thread = std::move(thread_);
        changed_.notify_all();
    }
    if (thread.joinable())
        thread.join();
    const Lock lock(mutex_);
    stopping_ = false;
    known_ = {};
}

IdErrorCode ServerConnection::AwaitOpen(Lock& lock, unsigned int generation)
{
    if (stopping_ || generation_ != generation)
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
    // The connection was lost since: the caller connects again.
    return result_ == IdSuccess ? IdServerLost : result_;
}

Response ServerConnection::AskOnce(Lock& lock, Request& request, unsigned int generation)
{
    if (const IdErrorCode code = AwaitOpen(lock, generation); code != IdSuccess)
        return Refusal(code);
    const std::shared_ptr<Channel> channel = channel_;
    lock.unlock();
    Response response = channel->conversation.Ask(request, ResponseLimit);
    lock.lock();
    return response;
}

void ServerConnection::DropOtherServer()
{
    if (state_ != State::Open || connected_.IsSameServer(parts_.target()))
        return;
    state_ = State::Connecting;
    wanted_ = true;
    channel_->conversation.Break();
}

void ServerConnection::Run()
{
    int quickLosses = 0;
    Lock lock(mutex_);
    for (;;)
    {
        changed_.wait(lock, [this] { return wanted_ || stopping_; });
        if (stopping_)
            break;
        wanted_ = false;
        state_ = State::Connecting;
        lock.unlock();
        const bool opened = TryConnect();
        const auto since = SteadyClock::now();
        const bool lost = opened && ReadUntilLost();
        lock.lock();
        Disconnect();
        // Reconnect even when idle, to keep receiving the events of other hosts.
        quickLosses = lost && SteadyClock::now() - since < QuickLoss ? quickLosses + 1 : 0;
        if (quickLosses == MaxQuickLosses)
            quickLosses = 0;
        else if (lost)
            wanted_ = true;
    }
    Disconnect();
}

void ServerConnection::Disconnect()
{
    state_ = State::Idle;
    // From here on calls find that there is no connection, so that those that end may connect again.
    if (channel_)
        channel_->conversation.Close();
    channel_.reset();
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
        Report(std::string("No connection to the server: ") + error.what());
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
        // Only this thread replaces the channel.
        return channel_->conversation.ReadUntilEnd() == Conversation::End::Lost;
    }
    catch (const std::exception& error)
    {
        Report(std::string("The connection to the server is closed: ") + error.what());
        return true;
    }
}

void ServerConnection::Report(const std::string& problem) const noexcept
{
    try
    {
        parts_.log(TALIXLog::Error, problem);
    }
    catch (const std::exception&)
    {
        // Logging failed, too.
    }
}

IdErrorCode ServerConnection::Connect(const ServerTarget& target)
{
    if (target.executable.empty())
    {
        parts_.log(TALIXLog::Error, "No server: no server application was found");
        return IdServerUnavailable;
    }
    const Deadline deadline(Count(ConnectLimit) * 3 / 4); // Ends before the callers that wait for it.
    // The server process may end between any two steps.
    for (int tries = 0; tries < ConnectTries && deadline.Left() > 0 && !IsStopping(); ++tries)
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
        if (IsBroken(file.get()))
            return std::nullopt; // The process has ended meanwhile, so that nothing is known about it.
        parts_.log(TALIXLog::Error, "The server of " + target.processIdentity + " is not used: " + reason);
        return IdServerUnavailable;
    }
    const auto channel = std::make_shared<Channel>(std::move(file), *this);
    if (!Adopt(channel))
        return IdServerLost;
    return Attach(channel->pipe, target, deadline);
}

bool ServerConnection::IsStopping()
{
    const Lock lock(mutex_);
    return stopping_;
}

/// Makes the channel known to Close, which breaks it.
bool ServerConnection::Adopt(const std::shared_ptr<Channel>& channel)
{
    const Lock lock(mutex_);
    if (!stopping_)
        channel_ = channel;
    return !stopping_;
}

std::optional<IdErrorCode> ServerConnection::Attach(PipeClient& pipe, const ServerTarget& target,
                                                    const Deadline& connecting)
{
    Request request;
    request.operation = Operations::Attach;
    request.caller.server = parts_.server();
    request.arguments["protocol"] = ProtocolVersion;
    request.arguments["identity"] = target.serverIdentity;
    const Deadline deadline(std::min<std::int64_t>(Count(ResponseLimit), connecting.Left()));
    if (!pipe.Write(WriteRequest(request), deadline))
        return std::nullopt;
    std::vector<LoginEvent> events; // Of changes after the response was made, but received before it.
    while (const std::optional<std::string> text = pipe.Read(&deadline))
    {
        const std::optional<ServerMessage> message = ReadServerMessage(*text);
        if (!message || message->shutdown)
            return std::nullopt;
        if (message->event)
            events.push_back(*message->event);
        if (!message->response)
            continue; // A deadline extension.
        const Response& response = *message->response;
        if (response.code != IdSuccess)
        {
            parts_.log(TALIXLog::Error,
                       "The server refuses this host: result " + std::to_string(static_cast<int>(response.code)));
            return response.code;
        }
        HandleAttached(target.serverIdentity, request.caller.server, response.result["restored"] == Json::Value(true));
        for (const LoginEvent& event : events)
            HandleEvent(event);
        return IdSuccess;
    }
    return std::nullopt;
}

void ServerConnection::HandleAttached(const std::string& identity, Server server, bool signedIn)
{
    const bool was = known_.identity == identity && known_.signedIn.count(server) != 0;
    known_ = {identity, {}};
    if (signedIn)
        HandleEvent({Events::LoginRestored, server, {}, IdSuccess});
    else if (was)
        HandleEvent({Events::LoggedOut, server, {}, IdSuccess});
}

void ServerConnection::HandleEvent(const LoginEvent& event)
{
    if (event.kind == Events::LoggedIn || event.kind == Events::LoginRestored)
        known_.signedIn.insert(event.server);
    if (event.kind == Events::LoggedOut)
        known_.signedIn.erase(event.server);
    parts_.onEvent(event);
}

} // namespace Kestrany::Agent
