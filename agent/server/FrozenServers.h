#ifndef AGENT_SERVER_FROZENSERVERS_H
#define AGENT_SERVER_FROZENSERVERS_H

#include <cstdint>
#include <future>
#include <map>
#include <memory>
#include <mutex>

#include "platform/Handle.h"
#include "server/ServerProcesses.h"

namespace Kestrany::Agent {

/// Terminates server processes that stay frozen for too long. Any thread may call.
class FrozenServers
{
public:
    /// No time is longer than a week.
    static constexpr std::int64_t MaxKillSeconds = 7 * 24 * 60 * 60;

    /// `answerLimit`: milliseconds after which a server that has not answered counts as frozen.
    FrozenServers(LogSink log, std::int64_t answerLimit);

    std::int64_t KillSeconds() const;
    /// The time that a server may stay frozen, for those that are found frozen from now on; 0 leaves them alone. False,
    /// and no change, for a time that is out of range.
    bool SetKillSeconds(std::int64_t seconds);

    /// A server was found frozen: its time begins, unless it runs already.
    void Add(DWORD processId);
    /// A server answers again.
    void Remove(DWORD processId);

private:
    /// One server's time.
    struct Watch
    {
        ~Watch() { SetEvent(cancelled.get()); }

        Handle process;
        Handle cancelled;
        std::future<void> end; ///< The last member: its destructor waits, for the work that uses the others.
    };

    void WaitAndKill(const Watch& watch, DWORD processId, std::int64_t seconds) const;

    const LogSink log_;
    const std::int64_t answerLimit_;
    mutable std::mutex mutex_;
    std::int64_t killSeconds_ = 60;
    std::map<DWORD, std::unique_ptr<Watch>> watches_;
};

} // namespace Kestrany::Agent

#endif
