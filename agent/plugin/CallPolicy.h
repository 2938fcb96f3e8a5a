#ifndef AGENT_PLUGIN_CALLPOLICY_H
#define AGENT_PLUGIN_CALLPOLICY_H

#include <mutex>
#include <string>

#include "identity/LoginService.h"
#include "orlindex/RetrySchedule.h"

namespace Kestrany::Agent {

/// How the identity service is called. Times in seconds.
struct CallSettings
{
    int interval = 300;
    int failInterval = 30;
    int minJitter = 0;
    int maxJitter = 10;
    std::string url = "https://production.simulator.invalid/";
};

/// The settings in force. A set with a value out of range is refused as a whole. Any thread may call.
class CallPolicy
{
public:
    IdErrorCode Override(const CallSettings& settings);
    IdErrorCode Override(const BackoffSettings& settings);
    CallSettings Calls() const;
    BackoffSettings Backoff() const;

private:
    mutable std::mutex mutex_;
    CallSettings calls_;
    BackoffSettings backoff_;
};

/// When a token refresh that failed is tried again: the schedule in force. Any thread may call.
class RetryPolicy
{
public:
    StdUtil::RetrySchedule Active() const;
    /// False, and the old schedule stays, for a negative limit or delay, for a step without a try, and for more than
    /// 100 steps. A schedule without steps does not try again.
    bool Replace(const StdUtil::RetrySchedule& schedule);

private:
    mutable std::mutex mutex_;
    StdUtil::RetrySchedule active_{10 * 60 * 1000, {{1000, 3}, {30 * 1000, 5}}};
};

} // namespace Kestrany::Agent

#endif
