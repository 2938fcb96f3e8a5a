#include "session/CallPolicy.h"

#include "session/SessionAddress.h"

namespace Kestrany::Agent {

namespace {

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

} // namespace Kestrany::Agent
