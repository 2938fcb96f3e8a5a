#include "identity/openid/Retry.h"

#include <algorithm>

#include "identity/openid/HttpHeaders.h"
#include "identity/openid/Limits.h"

namespace Kestrany::Agent::OpenId {

namespace {

using std::chrono::milliseconds;

/// From 0 to `most`.
milliseconds RandomWait(milliseconds most, const RandomSource& random)
{
    std::uint32_t number = 0;
    random(&number, sizeof number);
    return milliseconds(most.count() <= 0 ? 0 : static_cast<std::int64_t>(number) % (most.count() + 1));
}

milliseconds Interval(const Backoff& backoff, int retry)
{
    const milliseconds longest = backoff.maxInterval;
    milliseconds interval = std::min<milliseconds>(backoff.initialInterval, longest);
    for (int step = 0; step < retry && interval < longest; ++step)
    {
        // Compared by division: a host may set any multiplier.
        const bool isBeyond = interval.count() > 0 && backoff.multiplier > longest.count() / interval.count();
        interval = isBeyond ? longest : interval * backoff.multiplier;
    }
    return interval;
}

} // namespace

bool IsWorthARetry(const HttpReply& reply, Repetition repetition)
{
    switch (reply.problem)
    {
    case HttpProblem::None:
        if (reply.status == 429 || reply.status == 503)
            return true;
        return repetition == Repetition::Harmless && reply.status >= 500 && reply.status <= 599;
    case HttpProblem::NameNotResolved:
    case HttpProblem::NotConnected:
        return true;
    case HttpProblem::TimedOut:
    case HttpProblem::ConnectionLost:
        return repetition == Repetition::Harmless;
    case HttpProblem::TlsRefused:
    case HttpProblem::ReplyTooLarge:
    case HttpProblem::Failed:
        break;
    }
    return false;
}

std::optional<milliseconds> RetryDelay(const Backoff& backoff, int retry, const HttpReply& reply, Repetition repetition,
                                       TimePoint now, const RandomSource& random)
{
    if (retry >= backoff.maxRetries || !IsWorthARetry(reply, repetition))
        return std::nullopt;
    const std::optional<std::chrono::seconds> asked =
        reply.problem == HttpProblem::None ? ParseRetryAfter(reply.retryAfter, now) : std::nullopt;
    if (asked && *asked > Limits::RetryAfter)
        return std::nullopt;
    const milliseconds wait = std::max<milliseconds>(Interval(backoff, retry), asked.value_or(std::chrono::seconds(0)));
    return wait + RandomWait(backoff.jitter, random);
}

HttpReply RetryingHttp::Send(HttpRequest request, Repetition repetition, std::int64_t until) const
{
    const milliseconds limit = request.limit;
    for (int retry = 0;; ++retry)
    {
        // At least a millisecond: 0 would mean no limit to some platforms.
        request.limit = std::clamp(milliseconds(until - parts_.ticks()), milliseconds(1), limit);
        HttpReply reply = parts_.http.Send(request);
        const auto delay = RetryDelay(backoff_, retry, reply, repetition, parts_.clock(), parts_.random);
        if (!delay || parts_.ticks() + delay->count() >= until || !parts_.pause(*delay))
            return reply;
    }
}

} // namespace Kestrany::Agent::OpenId
