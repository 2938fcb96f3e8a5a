#include "server/ServerApplication.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "connection/KeyValueMessage.h"
#include "platform/ObjectNamespace.h"
#include "platform/Text.h"

namespace Kestrany::Agent {

namespace {

/// Milliseconds that hosts have to leave by themselves once they were told that the server quits.
constexpr std::int64_t LeaveLimit = 500;

Handle MakeEvent(const std::wstring& name)
{
    Handle event(CreateEventW(nullptr, TRUE, FALSE, name.c_str()));
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

ServerApplication::ServerApplication(std::string identity, ServerLimits limits, HostRegistry& registry)
    : identity_(std::move(identity)), start_(Ticks()), limits_(limits), end_(EndOf(start_, limits.quitAfter)),
      lastUse_(start_), registry_(registry), frozen_(MakeEvent(FrozenEventName(GetCurrentProcessId()))),
      thaw_(MakeEvent(ThawEventName(GetCurrentProcessId()))), listener_(HostPipeName(identity_))
{
}

void ServerApplication::Run(HANDLE quit)
{
    while (WaitOnce(quit))
    {
        if (freezes_)
            StayFrozen();
        registry_.RunTimers();
        RemoveHosts();
        if (IsOver(end_) || IsOver(IdleEnd()))
            break;
    }
}

bool ServerApplication::WaitOnce(HANDLE quit)
{
    const HANDLE objects[] = {quit, requests_.Arrived(), listener_.Arrived()};
    // Quitting comes first: the wait answers the first object that is signalled.
    switch (WaitForMultipleObjectsEx(3, objects, FALSE, TimeToWait(), TRUE))
    {
    case WAIT_OBJECT_0:
        return false;
    case WAIT_OBJECT_0 + 1:
        ServeRequest();
        return true;
    case WAIT_OBJECT_0 + 2:
        TakeHost();
        return true;
    case WAIT_FAILED:
        throw std::runtime_error("the wait for hosts failed: " + SystemMessage(GetLastError()));
    default: // A host's message has been taken, or a time has come.
        return true;
    }
}

void ServerApplication::RemoveHosts()
{
    const std::size_t before = hosts_.size();
    hosts_.remove_if([](const Connection& host) { return host.IsOver(); });
    if (hosts_.size() != before)
        lastUse_ = Ticks();
}

void ServerApplication::TakeHost()
{
    Handle pipe = listener_.Take();
    SleepEx(0, TRUE); // What hosts wrote by now is taken first: one that has attached is not given up.
    if (pipe && registry_.MakeRoom())
        hosts_.emplace_back(registry_, std::move(pipe));
    lastUse_ = Ticks();
}

void ServerApplication::ServeRequest()
{
    requests_.Serve([this](const std::string& request) { return Answer(request); });
    lastUse_ = Ticks();
}

/// A host that is told does not start another server. What is still on its way to it is sent.
void ServerApplication::DisconnectHosts()
{
    for (Connection& host : hosts_)
        host.SendShutdown();
    const Deadline deadline(LeaveLimit);
    while (!hosts_.empty() && deadline.Left() > 0)
    {
        SleepEx(deadline.Left(), TRUE);
        RemoveHosts();
    }
    hosts_.clear();
}

std::string ServerApplication::Answer(const std::string& request)
{
    if (request == PingRequest)
        return Ping();
    if (request != FreezeRequest)
        return "unknown request";
    // Set before the answer: whoever reads it finds the service frozen.
    ResetEvent(thaw_.get());
    SetEvent(frozen_.get());
    freezes_ = true;
    return FreezeAnswer;
}

std::string ServerApplication::Ping() const
{
    return WriteAnswers({{"processId", std::to_string(GetCurrentProcessId())},
                         {"identity", identity_},
                         {"version", AGENT_VERSION},
                         {"uptimeMilliseconds", std::to_string(Ticks() - start_)}});
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
    const bool used = std::any_of(hosts_.begin(), hosts_.end(), [](const Connection& host) { return host.IsHost(); });
    return used ? std::nullopt : EndOf(lastUse_, limits_.idleAfter);
}

DWORD ServerApplication::TimeToWait() const
{
    std::optional<std::int64_t> next;
    for (const std::optional<std::int64_t> end : {end_, IdleEnd(), registry_.NextTimer()})
    {
        if (end && (!next || *end < *next))
            next = end;
    }
    return next ? Deadline(*next - Ticks()).Left() : INFINITE;
}

bool ServerApplication::IsOver(std::optional<std::int64_t> end) const
{
    return end && Ticks() >= *end;
}

} // namespace Kestrany::Agent
