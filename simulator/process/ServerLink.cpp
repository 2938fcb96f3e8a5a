#include "process/ServerLink.h"

#include <algorithm>
#include <utility>

#include "platform/Text.h"
#include "platform/User.h"
#include "process/PrivatePipe.h"
#include "process/Scope.h"
#include "protocol/Operations.h"

namespace Kestrany::Simulator {

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

bool SamePath(const std::wstring& left, const std::wstring& right)
{
    return CompareStringOrdinal(left.c_str(), -1, right.c_str(), -1, TRUE) == CSTR_EQUAL;
}

std::wstring ExecutableOf(HANDLE process)
{
    std::wstring path(32'768, L'\0');
    auto size = static_cast<DWORD>(path.size());
    path.resize(QueryFullProcessImageNameW(process, 0, path.data(), &size) ? size : 0);
    return path;
}

std::wstring FullPath(const std::wstring& path)
{
    std::wstring full(32'768, L'\0');
    const DWORD size = GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    full.resize(size < full.size() ? size : 0);
    return full;
}

/// What speaks against the process at the other end; empty when it is this user's server application.
std::string Distrust(HANDLE pipe, const std::wstring& executable)
{
    ULONG id = 0;
    if (!GetNamedPipeServerProcessId(pipe, &id))
        return "the system does not tell which process it is";
    const Handle process(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, id));
    const std::string name = "process " + std::to_string(id);
    if (!process || UserSidOf(process.get()) != OwnUserSid())
        return name + " is not this user's";
    const std::wstring path = ExecutableOf(process.get());
    if (!SamePath(path, FullPath(executable)))
        return name + " is " + ToDisplay(path) + ", not " + ToDisplay(executable) +
               "; quit it (Pellwick.exe --quit), or give this installation a data folder of its own "
               "(PELLWICK_SIMULATOR_DATA)";
    return {};
}

Response Refusal(IdErrorCode code)
{
    Response response;
    response.code = code;
    return response;
}

} // namespace

ServerLink::ServerLink(Parts parts) : parts_(std::move(parts)), processes_(parts_.log) {}

ServerLink::~ServerLink()
{
    Close();
}

void ServerLink::Open()
{
    Lock lock(mutex_);
    AwaitOpen(lock);
}

Response ServerLink::Ask(Request request)
{
    Lock lock(mutex_);
    Response response = AskOnce(lock, request);
    // The server that is started in its place knows all that this one had answered: asking again is safe.
    if (response.code == IdServerLost && !ends_)
    {
        response = AskOnce(lock, request);
        // The first one may have done it before it died.
        if (request.operation == Operations::Logout && response.code == IdNotLoggedIn)
            response.code = IdSuccess;
    }
    return response;
}

void ServerLink::Close()
{
    const std::lock_guard closing(closing_);
    std::thread thread;
    {
        const Lock lock(mutex_);
        ends_ = true;
        if (pipe_)
            pipe_->Break();
        thread = std::move(thread_);
        changed_.notify_all();
    }
    if (thread.joinable())
        thread.join();
    const Lock lock(mutex_);
    ends_ = false;
}

IdErrorCode ServerLink::AwaitOpen(Lock& lock)
{
    DropOtherServer();
    if (state_ == State::Open)
        return IdSuccess;
    if (ends_)
        return IdServerLost;
    wanted_ = true;
    const unsigned int before = attempts_;
    if (!thread_.joinable())
        thread_ = std::thread([this] { Run(); });
    changed_.notify_all();
    const bool ended =
        changed_.wait_for(lock, ConnectLimit, [&] { return state_ == State::Open || attempts_ != before || ends_; });
    if (state_ == State::Open)
        return IdSuccess;
    return ended ? IdServerUnavailable : IdServerTimedOut;
}

Response ServerLink::AskOnce(Lock& lock, Request& request)
{
    if (const IdErrorCode code = AwaitOpen(lock); code != IdSuccess)
        return Refusal(code);
    const std::uint32_t id = request.id = nextId_++;
    const std::string message = WriteRequest(request);
    if (message.size() > MaxMessage)
        return Refusal(IdTextTooLong);
    pending_[id].limit = SteadyClock::now() + AnswerLimit;
    const std::shared_ptr<LinkPipe> pipe = pipe_;
    lock.unlock();
    // Without success the pipe breaks, and the link's thread finds that out.
    pipe->Write(message, Deadline(Count(AnswerLimit)));
    lock.lock();
    return AwaitAnswer(lock, id);
}

Response ServerLink::AwaitAnswer(Lock& lock, std::uint32_t id)
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

void ServerLink::DropOtherServer()
{
    if (state_ != State::Open || connected_.IsSameServer(parts_.target()))
        return;
    state_ = State::Connecting;
    wanted_ = true;
    pipe_->Break();
}

void ServerLink::Run()
{
    int quickLosses = 0;
    Lock lock(mutex_);
    while (!ends_)
    {
        changed_.wait(lock, [this] { return wanted_ || ends_; });
        if (ends_)
            break;
        wanted_ = false;
        state_ = State::Connecting;
        const LinkTarget target = parts_.target();
        lock.unlock();
        const std::shared_ptr<LinkPipe> pipe = Connect(target);
        const auto since = SteadyClock::now();
        lock.lock();
        ++attempts_;
        pipe_ = pipe;
        connected_ = target;
        state_ = pipe ? State::Open : State::Idle;
        changed_.notify_all();
        if (!pipe || ends_)
            continue;

        lock.unlock();
        const bool quit = ReadOn(*pipe);
        lock.lock();
        pipe_.reset();
        Fail(lock);
        quickLosses = SteadyClock::now() - since < QuickLoss ? quickLosses + 1 : 0;
        // What other hosts do, this one is to hear of, though nobody here may ask for long.
        if (!quit && quickLosses < MaxQuickLosses)
            wanted_ = true;
        if (quit || quickLosses >= MaxQuickLosses)
            quickLosses = 0;
    }
    pipe_.reset();
    Fail(lock);
}

void ServerLink::Fail(Lock&)
{
    state_ = State::Idle;
    for (auto& [id, pending] : pending_)
    {
        if (pending.outcome == Outcome::Waiting)
            pending.outcome = Outcome::Lost;
    }
    changed_.notify_all();
}

std::shared_ptr<LinkPipe> ServerLink::Connect(const LinkTarget& target)
{
    if (target.executable.empty())
    {
        parts_.log(TALIXLog::Error, "No server: no server application was found");
        return {};
    }
    const Deadline deadline(Count(ConnectLimit) * 3 / 4); // Who waits gets to hear of the end.
    bool startFailed = false;
    // A server may end, or be killed, between any two steps.
    for (int tries = 0; tries < ConnectTries && !startFailed && deadline.Left() > 0; ++tries)
    {
        try
        {
            if (std::shared_ptr<LinkPipe> pipe = ConnectOnce(target, deadline, startFailed))
                return pipe;
        }
        catch (const std::exception& error)
        {
            parts_.log(TALIXLog::Error, std::string("No connection to the server: ") + error.what());
            return {};
        }
    }
    return {};
}

std::shared_ptr<LinkPipe> ServerLink::ConnectOnce(const LinkTarget& target, const Deadline& deadline, bool& startFailed)
{
    const std::wstring name = HostPipeName(target.processIdentity);
    Handle file = OpenPrivatePipe(name, deadline);
    if (!file)
    {
        std::int64_t processId = 0;
        startFailed =
            !processes_.Start(target.executable, target.processIdentity, target.arguments, deadline.Left(), processId);
        if (!startFailed)
            file = OpenPrivatePipe(name, deadline);
    }
    if (!file)
        return {};
    if (const std::string reason = Distrust(file.get(), target.executable); !reason.empty())
    {
        parts_.log(TALIXLog::Error, "The server of " + target.processIdentity + " is not used: " + reason);
        startFailed = true;
        return {};
    }
    auto pipe = std::make_shared<LinkPipe>(std::move(file));
    return Attach(*pipe, target) ? pipe : nullptr;
}

bool ServerLink::Attach(LinkPipe& pipe, const LinkTarget& target)
{
    Request request;
    request.operation = Operations::Attach;
    request.caller.server = parts_.server();
    request.arguments["protocol"] = ProtocolVersion;
    request.arguments["identity"] = target.serverIdentity;
    const Deadline deadline(Count(AnswerLimit));
    if (!pipe.Write(WriteRequest(request), deadline))
        return false;
    while (const std::optional<std::string> text = pipe.Read(&deadline))
    {
        const std::optional<ServerMessage> message = ReadServerMessage(*text);
        if (!message || message->quits)
            return false;
        if (!message->response)
            continue; // It may take its time.
        const Response& response = *message->response;
        if (response.code != IdSuccess)
        {
            parts_.log(TALIXLog::Error,
                       "The server does not take this host: result " + std::to_string(static_cast<int>(response.code)));
            return false;
        }
        if (response.result["restored"] == Json::Value(true))
            parts_.onEvent({IdentityServices::IdServicesConsts::LoginRestored, request.caller.server, {}, IdSuccess});
        return true;
    }
    return false;
}

bool ServerLink::ReadOn(LinkPipe& pipe)
{
    while (const std::optional<std::string> text = pipe.Read(nullptr))
    {
        const std::optional<ServerMessage> message = ReadServerMessage(*text);
        if (!message)
        {
            parts_.log(TALIXLog::Error, "The server sent what is no message; the connection to it ends");
            break;
        }
        if (message->quits)
            return true;
        Take(*message);
    }
    return false;
}

void ServerLink::Take(const ServerMessage& message)
{
    if (message.event)
        parts_.onEvent(*message.event);
    const Lock lock(mutex_);
    const std::uint32_t id = message.response ? message.response->id : message.extension ? message.extension->id : 0;
    const auto found = pending_.find(id);
    if (found == pending_.end())
        return; // Nobody waits any more.
    if (message.extension)
        found->second.limit =
            SteadyClock::now() + std::min<std::chrono::milliseconds>(
                                     std::chrono::milliseconds(message.extension->milliseconds), MaxExtension);
    if (message.response)
    {
        found->second.response = *message.response;
        found->second.outcome = Outcome::Answered;
    }
    changed_.notify_all();
}

} // namespace Kestrany::Simulator
