#ifndef AGENT_SESSION_RETRYPOLICY_H
#define AGENT_SESSION_RETRYPOLICY_H

#include <mutex>

#include "orlindex/RetrySchedule.h"

namespace Kestrany::Agent {

/// When a token refresh that failed is tried again: the schedule in force. Any thread may call.
class RetryPolicy
{
public:
    StdUtil::RetrySchedule Active() const;
    /// False, with the old one left in force, for a negative limit or delay, for a step that makes no try, and for more
    /// than 100 steps. A schedule without steps does not try again.
    bool Replace(const StdUtil::RetrySchedule& schedule);

private:
    mutable std::mutex mutex_;
    StdUtil::RetrySchedule active_{10 * 60 * 1000, {{1000, 3}, {30 * 1000, 5}}};
};

} // namespace Kestrany::Agent

#endif
