#ifndef ORLINDEX_STRESS_WATCHDOG_H
#define ORLINDEX_STRESS_WATCHDOG_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "support/Patience.h"

namespace OrlindexTest {

/// Ends the process with a failing code if nothing happens for too long. Before that it prints the stacks of all
/// threads: each return address as module and offset.
class Watchdog
{
public:
    explicit Watchdog(std::chrono::seconds patience = Patience);
    ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    /// Reports that something happened, on any thread.
    void Pat() { ++pats_; }

private:
    void Watch();

    const std::chrono::seconds patience_;
    std::atomic<long long> pats_ = 0;
    std::mutex mutex_;
    std::condition_variable ending_;
    bool ended_ = false;
    std::thread thread_;
};

} // namespace OrlindexTest

#endif
