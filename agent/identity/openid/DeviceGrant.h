#ifndef AGENT_IDENTITY_OPENID_DEVICEGRANT_H
#define AGENT_IDENTITY_OPENID_DEVICEGRANT_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "identity/openid/Failure.h"
#include "identity/openid/Secret.h"
#include "identity/openid/Services.h"
#include "identity/openid/TokenReply.h"

namespace Kestrany::Agent::OpenId {

/// A sign-in with another device (RFC 8628).
struct DeviceAuthorization
{
    Secret deviceCode;
    std::string userCode;        ///< What the user types.
    std::string verificationUri; ///< Where the user types it.
    std::string completeUri;     ///< The same with the code in it; empty if the provider does not offer it.
    std::chrono::seconds lifetime{};
    std::chrono::seconds interval{5};
};

/// Parses a reply of the device authorization endpoint, whose body is cleared.
Outcome<DeviceAuthorization> ParseDeviceReply(HttpReply reply, const std::string& url, bool allowInsecureLoopback);

/// When the token endpoint is polled, and when polling ends. Times in ticks.
class DevicePolling
{
public:
    DevicePolling(std::chrono::seconds interval, std::chrono::seconds lifetime, std::int64_t now);

    std::int64_t NextPoll() const { return next_; }
    /// Takes the result of a poll. nullopt: poll again at NextPoll. Else the failure that the sign-in ends with; tokens
    /// are not a failure, and are not to be passed.
    std::optional<Failure> Continue(const TokenOutcome& outcome, const std::string& url, std::int64_t now);

private:
    std::int64_t interval_;
    const std::int64_t end_;
    std::int64_t next_;
};

} // namespace Kestrany::Agent::OpenId

#endif
