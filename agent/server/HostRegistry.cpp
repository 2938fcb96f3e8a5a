#include "server/HostRegistry.h"

#include <algorithm>
#include <utility>

#include "server/HostSession.h"

namespace Kestrany::Agent {

HostRegistry::HostRegistry(IdentitySource& source, ServerParts parts) : source_(source), parts_(std::move(parts))
{
    source_.Subscribe([this](const std::string& identity, const LoginEvent& event) {
        for (HostSession* host : hosts_)
            host->Deliver(identity, event);
    });
}

void HostRegistry::Remove(HostSession& host)
{
    hosts_.erase(std::remove(hosts_.begin(), hosts_.end(), &host), hosts_.end());
}

bool HostRegistry::MakeRoom()
{
    std::size_t connections = 0;
    std::size_t unattached = 0;
    HostSession* oldest = nullptr; // Of the unattached.
    for (HostSession* host : hosts_)
    {
        if (host->IsGivenUp())
            continue;
        ++connections;
        if (host->IsAttached())
            continue;
        ++unattached;
        oldest = oldest == nullptr ? host : oldest;
    }
    if (connections < MaxConnections && unattached < MaxUnattached)
        return true;
    if (oldest == nullptr)
    {
        parts_.warn("A host is refused: too many hosts are connected");
        return false;
    }
    parts_.warn("A connection is closed for a newer one: its host has not attached");
    oldest->GiveUp();
    return true;
}

void HostRegistry::RunTimers()
{
    source_.RunTimers(); // First: what hosts wait for may end by it.
    for (HostSession* host : hosts_)
        host->RunTimers();
}

std::optional<std::int64_t> HostRegistry::NextTimer() const
{
    std::optional<std::int64_t> next = source_.NextTimer();
    for (const HostSession* host : hosts_)
    {
        const std::optional<std::int64_t> own = host->NextTimer();
        if (own && (!next || *own < *next))
            next = own;
    }
    return next;
}

} // namespace Kestrany::Agent
