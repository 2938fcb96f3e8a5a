#ifndef AGENT_IDENTITY_OPENID_RETRY_H
#define AGENT_IDENTITY_OPENID_RETRY_H

#include <chrono>
#include <optional>

#include "identity/openid/Services.h"

namespace Kestrany::Agent::OpenId {

/// How requests are repeated.
struct Backoff
{
    std::chrono::seconds initialInterval{1};
    std::chrono::seconds maxInterval{60};
    int multiplier = 2;
    int maxRetries = 5;
    std::chrono::seconds jitter{1}; ///< Up to so much is added to each wait.
};

/// Whether a request may be repeated after the provider may have carried it out.
enum class Repetition
{
    Harmless,
    /// It presents something that can be used once, such as a code: it is repeated only if the provider has not seen it
    /// or has refused to look at it (429, 503).
    SingleUse
};

/// Whether another attempt is worth it: 429, 5xx and problems of the connection, and nothing else.
bool IsWorthARetry(const HttpReply& reply, Repetition repetition);

/// How long to wait before attempt `retry` + 1; `retry` counts from 0. nullopt if the request is not repeated: it is
/// not worth it, the retries are used up, or the provider asks for a wait that is too long.
std::optional<std::chrono::milliseconds> RetryDelay(const Backoff& backoff, int retry, const HttpReply& reply,
                                                    Repetition repetition, TimePoint now, const RandomSource& random);

/// Sends requests again, as long as it is worth it and the limit has not passed.
class RetryingHttp
{
public:
    struct Parts
    {
        Http& http;
        Clock clock;
        Ticks ticks;
        RandomSource random;
        Pause pause;
    };

    RetryingHttp(Parts parts, Backoff backoff) : parts_(std::move(parts)), backoff_(backoff) {}

    /// `until`: in ticks. No attempt and no wait lasts longer.
    HttpReply Send(HttpRequest request, Repetition repetition, std::int64_t until) const;

private:
    const Parts parts_;
    const Backoff backoff_;
};

} // namespace Kestrany::Agent::OpenId

#endif
