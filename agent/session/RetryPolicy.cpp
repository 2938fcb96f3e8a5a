#include "session/RetryPolicy.h"

#include <algorithm>

namespace Kestrany::Agent {

namespace {

constexpr std::size_t MaxSteps = 100;

bool IsValid(const StdUtil::RetrySchedule& schedule)
{
    return schedule.limit >= 0 && schedule.steps.size() <= MaxSteps &&
           std::all_of(schedule.steps.begin(), schedule.steps.end(),
                       [](const StdUtil::RetryStep& step) { return step.delay >= 0 && step.tries >= 1; });
}

} // namespace

StdUtil::RetrySchedule RetryPolicy::Active() const
{
    const std::lock_guard lock(mutex_);
    return active_;
}

bool RetryPolicy::Replace(const StdUtil::RetrySchedule& schedule)
{
    if (!IsValid(schedule))
        return false;
    const std::lock_guard lock(mutex_);
    active_ = schedule;
    return true;
}

} // namespace Kestrany::Agent
