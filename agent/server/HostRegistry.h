#ifndef AGENT_SERVER_HOSTREGISTRY_H
#define AGENT_SERVER_HOSTREGISTRY_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "identity/IdentitySource.h"

namespace Kestrany::Agent {

class HostSession;

/// What the hosts' sessions need of their process.
struct ServerParts
{
    /// Milliseconds that only grow.
    std::function<std::int64_t()> ticks;
    std::function<void(const std::string& message)> warn;
    /// Ends the process at once, as a crash does.
    std::function<void()> crash;
};

/// The hosts that are connected to the server process, and the source that serves them. One thread at a time.
class HostRegistry
{
public:
    static constexpr std::size_t MaxConnections = 256;
    /// Connections among them whose host has not attached.
    static constexpr std::size_t MaxUnattached = 64;

    HostRegistry(IdentitySource& source, ServerParts parts);

    IdentitySource& Source() { return source_; }
    const ServerParts& Parts() const { return parts_; }

    void Add(HostSession& host) { hosts_.push_back(&host); }
    void Remove(HostSession& host);
    /// To be called before another connection is accepted. If there are too many, gives up the oldest one that has not
    /// attached: a client that only connects keeps no host out. False if all of them have attached: the new connection
    /// is to be refused.
    bool MakeRoom();
    /// Does what is due by now: ends waits, sends responses that were held back.
    void RunTimers();
    /// When RunTimers has something to do, in ticks; nullopt if nothing is pending.
    std::optional<std::int64_t> NextTimer() const;

private:
    IdentitySource& source_;
    const ServerParts parts_;
    std::vector<HostSession*> hosts_; ///< In the order in which they connected.
};

} // namespace Kestrany::Agent

#endif
