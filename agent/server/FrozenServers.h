#ifndef AGENT_SERVER_FROZENSERVERS_H
#define AGENT_SERVER_FROZENSERVERS_H

#include <cstdint>
#include <future>
#include <map>
#include <memory>
#include <mutex>

#include "platform/Base.h"
#include "server/ServerProcesses.h"

namespace Kestrany::Agent {

/// Terminates server processes that stay frozen for too long. Any thread may call.
class FrozenServers
{
public:
    /// The longest time: a week.
    static constexpr std::int64_t MaxKillSeconds = 7 * 24 * 60 * 60;

    /// `responseLimit`: milliseconds after which a server without a response counts as frozen.
    FrozenServers(LogSink log, std::int64_t responseLimit);

    std::int64_t KillSeconds() const;
    /// How long a server may stay frozen that is found frozen from now on; 0 for any time. False, and no change, for a
    /// time out of range.
    bool SetKillSeconds(std::int64_t seconds);

    /// A server was found frozen: its time starts, unless it has started before.
    void Add(DWORD processId);
    /// A server responds again: it is no longer watched.
    void Remove(DWORD processId);

private:
    /// The wait for one server.
    struct Watch
    {
        ~Watch() { SetEvent(cancelled.get()); }

        Handle process;
        Handle cancelled;
        std::future<void> end; ///< The last member: its destructor waits for the task that uses the others.
    };

    void WaitAndKill(const Watch& watch, DWORD processId, std::int64_t seconds) const;

    const LogSink log_;
    const std::int64_t responseLimit_;
    mutable std::mutex mutex_;
    std::int64_t killSeconds_ = 60;
    std::map<DWORD, std::unique_ptr<Watch>> watches_;
};

} // namespace Kestrany::Agent

#endif
