#include "server/FrozenServers.h"

#include <chrono>
#include <utility>

#include "connection/ServerRequests.h"
#include "platform/Deadline.h"
#include "server/ServerProcesses.h"

namespace Kestrany::Agent {

FrozenServers::FrozenServers(LogSink log, std::int64_t responseLimit)
    : log_(std::move(log)), responseLimit_(responseLimit)
{
}

std::int64_t FrozenServers::KillSeconds() const
{
    const std::lock_guard lock(mutex_);
    return killSeconds_;
}

bool FrozenServers::SetKillSeconds(std::int64_t seconds)
{
    if (seconds < 0 || seconds > MaxKillSeconds)
        return false;
    const std::lock_guard lock(mutex_);
    killSeconds_ = seconds;
    return true;
}

void FrozenServers::Add(DWORD processId)
{
    const std::lock_guard lock(mutex_);
    std::unique_ptr<Watch>& entry = watches_[processId];
    const bool runs = entry && entry->end.wait_for(std::chrono::seconds(0)) == std::future_status::timeout;
    if (runs || killSeconds_ == 0)
        return;
    auto watch = std::make_unique<Watch>();
    watch->process.reset(OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE, FALSE, processId));
    watch->cancelled.reset(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    if (!watch->process || !watch->cancelled)
        return log_(TALIXLog::Warning, "Server process " + std::to_string(processId) + " cannot be watched");
    watch->end = std::async(std::launch::async, [this, watched = watch.get(), processId, seconds = killSeconds_] {
        WaitAndKill(*watched, processId, seconds);
    });
    entry = std::move(watch);
}

void FrozenServers::Remove(DWORD processId)
{
    std::unique_ptr<Watch> watch; // Its destructor waits, after the lock is released.
    const std::lock_guard lock(mutex_);
    if (const auto found = watches_.find(processId); found != watches_.end())
    {
        watch = std::move(found->second);
        watches_.erase(found);
    }
}

void FrozenServers::WaitAndKill(const Watch& watch, DWORD processId, std::int64_t seconds) const
{
    const HANDLE objects[] = {watch.process.get(), watch.cancelled.get()};
    if (WaitForMultipleObjects(2, objects, FALSE, Deadline(seconds * 1000).Left()) != WAIT_TIMEOUT)
        return;
    // It may have gone on unnoticed.
    if (PingServer(processId, responseLimit_))
        return;
    TerminateProcess(watch.process.get(), ServerFailed);
    log_(TALIXLog::Warning, "Server process " + std::to_string(processId) + " was frozen for " +
                                std::to_string(seconds) + " s and was terminated");
}

} // namespace Kestrany::Agent
