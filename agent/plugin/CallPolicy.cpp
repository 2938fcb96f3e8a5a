#include "plugin/CallPolicy.h"

#include <algorithm>

namespace Kestrany::Agent {

namespace {

constexpr std::size_t MaxRetrySteps = 100;

bool IsValid(const StdUtil::RetrySchedule& schedule)
{
    return schedule.limit >= 0 && schedule.steps.size() <= MaxRetrySteps &&
           std::all_of(schedule.steps.begin(), schedule.steps.end(),
                       [](const StdUtil::RetryStep& step) { return step.delay >= 0 && step.tries >= 1; });
}

bool IsValid(const CallSettings& settings)
{
    return settings.interval > 0 && settings.failInterval > 0 && settings.minJitter >= 0 &&
           settings.minJitter <= settings.maxJitter && IsWebAddress(settings.url);
}

bool IsValid(const BackoffSettings& settings)
{
    return settings.initialInterval > 0 && settings.initialInterval <= settings.maxInterval &&
           settings.multiplier >= 1 && settings.maxRetries >= 0 && settings.jitter >= 0;
}

} // namespace

IdErrorCode CallPolicy::Override(const CallSettings& settings)
{
    if (!IsValid(settings))
        return IdInvalidOverride;
    const std::lock_guard lock(mutex_);
    calls_ = settings;
    return IdSuccess;
}

IdErrorCode CallPolicy::Override(const BackoffSettings& settings)
{
    if (!IsValid(settings))
        return IdInvalidOverride;
    const std::lock_guard lock(mutex_);
    backoff_ = settings;
    return IdSuccess;
}

CallSettings CallPolicy::Calls() const
{
    const std::lock_guard lock(mutex_);
    return calls_;
}

BackoffSettings CallPolicy::Backoff() const
{
    const std::lock_guard lock(mutex_);
    return backoff_;
}

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
