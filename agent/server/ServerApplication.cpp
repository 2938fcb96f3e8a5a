#include "server/ServerApplication.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "connection/ServerRequests.h"
#include "platform/Base.h"
#include "platform/Deadline.h"
#include "platform/ObjectNamespace.h"
#include "server/ToolSession.h"

namespace Kestrany::Agent {

namespace {

/// Milliseconds within which hosts leave by themselves once they know that the server shuts down.
constexpr std::int64_t LeaveLimit = 500;

/// Milliseconds that a tool may stay connected.
constexpr std::int64_t ToolLimit = 1000;

/// Tools that may be connected at once. The oldest one makes room for another.
constexpr std::size_t MaxTools = 64;

enum class Reset
{
    ByHand,
    ByItself
};

Handle MakeEvent(Reset reset, const wchar_t* name)
{
    Handle event(CreateEventW(nullptr, reset == Reset::ByHand, FALSE, name));
    if (!event)
        throw std::runtime_error("no event: " + SystemMessage(GetLastError()));
    return event;
}

std::int64_t Ticks()
{
    return static_cast<std::int64_t>(GetTickCount64());
}

std::optional<std::int64_t> EndOf(std::int64_t start, std::optional<unsigned int> seconds)
{
    if (!seconds)
        return std::nullopt;
    return start + std::int64_t{*seconds} * 1000;
}

} // namespace

ServerApplication::HostConnection::HostConnection(HostRegistry& registry, Handle pipe, HANDLE transferred)
    : connection(std::move(pipe), transferred, [&](MessageHandler::Send send) {
          auto made = std::make_unique<HostSession>(registry, std::move(send));
          session = made.get();
          return made;
      })
{
}

ServerApplication::ServerApplication(std::string identity, ServerLimits limits, HostRegistry& registry)
    : identity_(std::move(identity)), start_(Ticks()), limits_(limits), end_(EndOf(start_, limits.quitAfter)),
      lastUse_(start_), registry_(registry),
      frozen_(MakeEvent(Reset::ByHand, FrozenEventName(GetCurrentProcessId()).c_str())),
      thaw_(MakeEvent(Reset::ByHand, ThawEventName(GetCurrentProcessId()).c_str())),
      transferred_(MakeEvent(Reset::ByItself, nullptr)), toolListener_(ProcessPipeName(GetCurrentProcessId())),
      hostListener_(HostPipeName(identity_))
{
}

void ServerApplication::Run(HANDLE quit, HANDLE wake)
{
    while (WaitOnce(quit, wake))
    {
        RunTimers();
        RemoveConnections();
        if (IsPast(end_) || IsPast(IdleEnd()))
            break;
    }
}

bool ServerApplication::WaitOnce(HANDLE quit, HANDLE wake)
{
    const HANDLE objects[] = {quit, toolListener_.Connected(), hostListener_.Connected(), wake, transferred_.get()};
    // Of several objects that are set the wait returns the first one: quitting comes before everything else.
    const DWORD result = WaitForMultipleObjects(5, objects, FALSE, HasTransfers() ? 0 : TimeToWait());
    if (result == WAIT_OBJECT_0)
        return false;
    // Messages that have arrived count before limits do.
    HandleTransfers();
    switch (result)
    {
    case WAIT_OBJECT_0 + 1:
        AcceptTool();
        return true;
    case WAIT_OBJECT_0 + 2:
        AcceptHost();
        return true;
    case WAIT_FAILED:
        throw std::runtime_error("the wait for clients failed: " + SystemMessage(GetLastError()));
    default: // Messages have been handled, the source has something to do, or a limit has passed.
        return true;
    }
}

void ServerApplication::RunTimers()
{
    // A sign-in that ends has several messages for a host.
    for (HostConnection& host : hosts_)
        host.connection.Hold();
    registry_.RunTimers();
    for (HostConnection& host : hosts_)
        host.connection.Release();
}

bool ServerApplication::HasTransfers() const
{
    return std::any_of(tools_.begin(), tools_.end(), [](const PipeConnection& tool) { return tool.HasTransfers(); }) ||
           std::any_of(hosts_.begin(), hosts_.end(),
                       [](const HostConnection& host) { return host.connection.HasTransfers(); });
}

void ServerApplication::HandleTransfers()
{
    for (PipeConnection& tool : tools_)
        tool.HandleTransfers();
    for (HostConnection& host : hosts_)
        host.connection.HandleTransfers();
}

void ServerApplication::RemoveConnections()
{
    tools_.remove_if([](const PipeConnection& tool) { return tool.IsOver(); });
    const std::size_t before = hosts_.size();
    hosts_.remove_if([](const HostConnection& host) { return host.connection.IsOver(); });
    if (hosts_.size() != before)
        lastUse_ = Ticks();
}

void ServerApplication::AcceptHost()
{
    Handle pipe = hostListener_.Accept();
    if (pipe && registry_.MakeRoom())
        hosts_.emplace_back(registry_, std::move(pipe), transferred_.get());
    lastUse_ = Ticks();
}

void ServerApplication::AcceptTool()
{
    lastUse_ = Ticks();
    Handle pipe = toolListener_.Accept();
    if (!pipe)
        return;
    if (tools_.size() == MaxTools)
        tools_.pop_front();
    const auto limit = lastUse_ + ToolLimit;
    tools_.emplace_back(std::move(pipe), transferred_.get(), [&](MessageHandler::Send send) {
        return std::make_unique<ToolSession>(
            [this](const std::string& operation) { return PerformToolOperation(operation); },
            [this] {
                if (freezes_)
                    StayFrozen();
            },
            std::move(send), &Ticks, limit);
    });
    toolsEnd_ = limit;
}

void ServerApplication::DisconnectHosts()
{
    for (HostConnection& host : hosts_)
        host.session->SendShutdown();
    const Deadline deadline(LeaveLimit);
    while (!hosts_.empty() && deadline.Left() > 0)
    {
        WaitForSingleObject(transferred_.get(), HasTransfers() ? 0 : deadline.Left());
        HandleTransfers();
        RemoveConnections();
    }
    hosts_.clear();
}

std::optional<Json::Value> ServerApplication::PerformToolOperation(const std::string& operation)
{
    lastUse_ = Ticks();
    if (operation == Operations::Ping)
        return Describe();
    if (operation != Operations::Freeze)
        return std::nullopt;
    // Set before the response: the tool then finds the event. The process freezes right after the response: once a tool
    // has it, no message of a host is handled.
    ResetEvent(thaw_.get());
    SetEvent(frozen_.get());
    freezes_ = true;
    return Json::Value(Json::objectValue);
}

Json::Value ServerApplication::Describe() const
{
    Json::Value result(Json::objectValue);
    result["processId"] = std::to_string(GetCurrentProcessId());
    result["identity"] = identity_;
    result["version"] = AGENT_VERSION;
    result["uptimeMilliseconds"] = std::to_string(Ticks() - start_);
    return result;
}

void ServerApplication::StayFrozen()
{
    WaitForSingleObject(thaw_.get(), end_ ? Deadline(*end_ - Ticks()).Left() : INFINITE);
    freezes_ = false;
    ResetEvent(frozen_.get());
    lastUse_ = Ticks();
}

std::optional<std::int64_t> ServerApplication::IdleEnd() const
{
    // A client that connected without attaching does not keep the server running.
    const bool used = std::any_of(hosts_.begin(), hosts_.end(),
                                  [](const HostConnection& host) { return host.session->IsAttached(); });
    return used ? std::nullopt : EndOf(lastUse_, limits_.idleAfter);
}

DWORD ServerApplication::TimeToWait() const
{
    const std::optional<std::int64_t> toolsEnd = tools_.empty() ? std::nullopt : toolsEnd_;
    std::optional<std::int64_t> next;
    for (const std::optional<std::int64_t> end : {end_, IdleEnd(), registry_.NextTimer(), toolsEnd})
    {
        if (end && (!next || *end < *next))
            next = end;
    }
    return next ? Deadline(*next - Ticks()).Left() : INFINITE;
}

bool ServerApplication::IsPast(std::optional<std::int64_t> end) const
{
    return end && Ticks() >= *end;
}

} // namespace Kestrany::Agent
