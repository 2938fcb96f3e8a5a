#include "identity/openid/DeviceGrant.h"

#include <algorithm>

#include "identity/openid/HttpHeaders.h"
#include "identity/openid/Limits.h"
#include "identity/openid/ReplyJson.h"
#include "identity/openid/Url.h"

namespace Kestrany::Agent::OpenId {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr seconds SlowDown{5}; // As RFC 8628 says.

bool IsPrintable(const std::string& text)
{
    return std::all_of(text.begin(), text.end(), [](char letter) { return letter >= ' ' && letter <= '~'; });
}

bool IsAddress(const std::string& text, bool allowInsecureLoopback)
{
    const std::optional<Url> url = ParseUrl(text);
    return url && IsTrustworthy(*url, allowInsecureLoopback);
}

/// nullopt if a member is missing or not usable; `problem` says which.
std::optional<DeviceAuthorization> ReadDevice(SecretObject& object, bool allowInsecureLoopback, std::string& problem)
{
    const Json::Value& root = object.Root();
    DeviceAuthorization device;
    device.deviceCode = object.Take(Member(root, "device_code"));
    const auto userCode = TextMember(root, "user_code", Limits::UserCode);
    // An early draft of the standard called it "verification_url", and some providers still do.
    auto verification = TextMember(root, "verification_uri", Limits::Address);
    if (!verification)
        verification = TextMember(root, "verification_url", Limits::Address);
    const auto complete = TextMember(root, "verification_uri_complete", Limits::Address);
    const auto lifetime = LenientSecondsMember(root, "expires_in");
    const auto interval = LenientSecondsMember(root, "interval");
    if (device.deviceCode.IsEmpty() || device.deviceCode.Size() > Limits::Token)
        problem = "no usable \"device_code\"";
    else if (!userCode || !IsPrintable(*userCode))
        problem = "no usable \"user_code\"";
    else if (!verification || !IsAddress(*verification, allowInsecureLoopback))
        problem = "no usable \"verification_uri\"";
    else if (complete && !IsAddress(*complete, allowInsecureLoopback))
        problem = "no usable \"verification_uri_complete\"";
    else if (!lifetime || *lifetime == 0)
        problem = "no usable \"expires_in\"";
    else if (!Member(root, "interval").isNull() && (!interval || *interval > Limits::PollInterval.count()))
        problem = "no usable \"interval\"";
    else
    {
        device.userCode = *userCode;
        device.verificationUri = *verification;
        device.completeUri = complete.value_or(std::string());
        device.lifetime = std::min(seconds(*lifetime), Limits::TokenLifetime);
        // Not below a second, whatever the provider allows.
        device.interval = seconds(std::max<std::int64_t>(interval.value_or(SlowDown.count()), 1));
        return device;
    }
    return std::nullopt;
}

} // namespace

Outcome<DeviceAuthorization> ParseDeviceReply(HttpReply reply, const std::string& url, bool allowInsecureLoopback)
{
    if (std::optional<Failure> failure = TransportFailure(reply, url))
        return *std::move(failure);
    const std::string expected = "a code for the other device from " + Shown(url);
    const std::string description = DescribeReply(reply);
    if (reply.status == 429 || reply.status >= 500)
        return Failure{IdProviderFailed, expected, description};
    std::string problem = "no JSON";
    std::optional<SecretObject> object;
    if (MediaType(reply.contentType) == "application/json")
        object = SecretObject::Parse(std::move(reply.body), {"device_code"}, problem);
    if (!object)
        return Failure{IdDeviceReplyMalformed, expected, description + ": " + problem};
    if (reply.status != 200)
    {
        const ProviderError error = ReadProviderError(object->Root(), {});
        return Failure{IdTokenEndpointError, expected, description + error.Suffix()};
    }
    std::optional<DeviceAuthorization> device = ReadDevice(*object, allowInsecureLoopback, problem);
    if (!device)
        return Failure{IdDeviceReplyMalformed, expected, problem};
    return *std::move(device);
}

DevicePolling::DevicePolling(seconds interval, seconds lifetime, std::int64_t now)
    : interval_(milliseconds(interval).count()), end_(now + milliseconds(lifetime).count()), next_(now + interval_)
{
}

std::optional<Failure> DevicePolling::Continue(const TokenOutcome& outcome, const std::string& url, std::int64_t now)
{
    if (const auto* const failure = std::get_if<Failure>(&outcome))
    {
        // RFC 8628: poll less often when the connection fails.
        if (failure->code != IdProviderUnreachable && failure->code != IdProviderFailed)
            return *failure;
        interval_ *= 2;
    }
    else if (const auto* const error = std::get_if<ProviderError>(&outcome))
    {
        if (error->error == "slow_down")
            interval_ += milliseconds(SlowDown).count();
        else if (error->error == "access_denied")
            return Failure{IdSignInDenied, "tokens from " + Shown(url), "the user's refusal on the other device"};
        else if (error->error == "expired_token")
            return Failure{IdDeviceCodeExpired, "tokens from " + Shown(url), "the error \"expired_token\""};
        else if (error->error != "authorization_pending")
            return GrantFailure(*error, url);
    }
    interval_ = std::min(interval_, milliseconds(Limits::PollInterval).count());
    next_ = now + interval_;
    if (next_ >= end_)
        return Failure{IdDeviceCodeExpired, "the user's sign-in while the code is valid", "none"};
    return std::nullopt;
}

} // namespace Kestrany::Agent::OpenId
