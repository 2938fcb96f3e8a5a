#ifndef AGENT_IDENTITY_OPENID_REFRESH_H
#define AGENT_IDENTITY_OPENID_REFRESH_H

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "identity/openid/Failure.h"
#include "identity/openid/Services.h"

namespace Kestrany::Agent::OpenId {

/// A kept access token is returned as long as it is valid for this time more.
inline constexpr std::chrono::seconds RefreshMargin{60};

/// Lifetime of an access token whose provider does not say it: short if the token can be refreshed, so that a host
/// seldom meets an expired one.
inline constexpr std::chrono::seconds AssumedLifetime{300};
inline constexpr std::chrono::seconds AssumedLifetimeWithoutRefresh{3600};

/// When an access token expires that came at `now`.
TimePoint AccessTokenExpiry(TimePoint now, std::optional<std::chrono::seconds> lifetime, bool canRefresh);

/// Whether a kept token is returned without a refresh.
bool IsFresh(TimePoint expiry, TimePoint now);

/// One refresh at a time for each grant, whatever number of hosts asks. Any thread may call.
class SharedRefresh
{
public:
    /// Receives the result of the one refresh: nullopt if it succeeded.
    using Waiter = std::function<void(const std::optional<Failure>& failure)>;

    /// Adds a waiter for the refresh of a grant. True if none is running: the caller then performs it, and calls
    /// Finish.
    bool Join(const std::string& grant, Waiter waiter);
    /// Calls every waiter of the grant. Waiters that join from now on need a new refresh.
    void Finish(const std::string& grant, const std::optional<Failure>& failure);

private:
    std::mutex mutex_;
    std::map<std::string, std::vector<Waiter>> waiters_; ///< An entry for each refresh that runs.
};

} // namespace Kestrany::Agent::OpenId

#endif
