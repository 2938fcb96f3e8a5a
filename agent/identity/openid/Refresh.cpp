#include "identity/openid/Refresh.h"

#include <utility>

namespace Kestrany::Agent::OpenId {

TimePoint AccessTokenExpiry(TimePoint now, std::optional<std::chrono::seconds> lifetime, bool canRefresh)
{
    return now + lifetime.value_or(canRefresh ? AssumedLifetime : AssumedLifetimeWithoutRefresh);
}

bool IsFresh(TimePoint expiry, TimePoint now)
{
    return expiry - now >= RefreshMargin;
}

bool SharedRefresh::Join(const std::string& grant, Waiter waiter)
{
    const std::lock_guard lock(mutex_);
    const auto [entry, isFirst] = waiters_.try_emplace(grant);
    entry->second.push_back(std::move(waiter));
    return isFirst;
}

void SharedRefresh::Finish(const std::string& grant, const std::optional<Failure>& failure)
{
    std::vector<Waiter> waiters;
    {
        const std::lock_guard lock(mutex_);
        const auto found = waiters_.find(grant);
        if (found == waiters_.end())
            return;
        waiters = std::move(found->second);
        waiters_.erase(found);
    }
    // Without the lock: a waiter may join again.
    for (const Waiter& waiter : waiters)
        waiter(failure);
}

} // namespace Kestrany::Agent::OpenId
