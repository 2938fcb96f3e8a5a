// Replies of the token endpoint, the device endpoint and the endpoint of pushed requests.

#include <algorithm>
#include <cstdint>
#include <string>

#include "OpenIdReplies.h"
#include "identity/openid/AuthorizationRequest.h"
#include "identity/openid/DeviceGrant.h"
#include "identity/openid/Limits.h"
#include "identity/openid/TokenReply.h"
#include "identity/openid/Url.h"

using namespace Kestrany::Agent;
using namespace Kestrany::Agent::OpenId;
using OrlindexTest::ReplyOf;
using OrlindexTest::Require;

namespace {

constexpr char Address[] = "https://a.example/token";
constexpr char Presented[] = "presented-secret";

void RequireToken(const Secret& token)
{
    const std::string_view text = token.View();
    Require(text.size() <= Limits::Token &&
                std::all_of(text.begin(), text.end(), [](char letter) { return letter >= ' ' && letter <= '~'; }),
            "a token is plain and not huge");
}

void RequireNoSecret(const Failure& failure)
{
    OrlindexTest::RequireGoodLine(failure);
    Require(LogLine(failure).find(Presented) == std::string::npos, "a log line repeats no secret");
}

void RequireTokens(const std::string& body, int status)
{
    TokenOutcome outcome = ParseTokenReply(ReplyOf(body, status), Address, {Presented});
    if (const auto* const failure = std::get_if<Failure>(&outcome))
        return RequireNoSecret(*failure);
    if (const auto* const error = std::get_if<ProviderError>(&outcome))
    {
        Require(!error->error.empty(), "an error has a name");
        return RequireNoSecret(GrantFailure(*error, Address));
    }
    const auto& tokens = std::get<TokenReply>(outcome);
    Require(status == 200, "tokens come with status 200");
    Require(!tokens.accessToken.IsEmpty(), "there is an access token");
    RequireToken(tokens.accessToken);
    RequireToken(tokens.idToken);
    RequireToken(tokens.refreshToken);
    Require(!tokens.lifetime || (tokens.lifetime->count() >= 0 && *tokens.lifetime <= Limits::TokenLifetime),
            "a lifetime is in its range");
}

void RequireDevice(const std::string& body, int status)
{
    const auto outcome = ParseDeviceReply(ReplyOf(body, status), Address, false);
    if (const Failure* const failure = FailureOf(outcome))
        return OrlindexTest::RequireGoodLine(*failure);
    const DeviceAuthorization& device = ResultOf(outcome);
    RequireToken(device.deviceCode);
    Require(!device.userCode.empty() && device.userCode.size() <= Limits::UserCode, "a user code is short");
    Require(ParseUrl(device.verificationUri)->isHttps, "the user is sent to an https address");
    Require(device.interval.count() >= 1 && device.interval <= Limits::PollInterval, "an interval is in its range");
    DevicePolling polling(device.interval, device.lifetime, 0);
    Require(polling.NextPoll() >= 1000, "polls have a distance");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static constexpr int statuses[] = {200, 201, 400, 401, 429, 503, 302};
    const int status = size == 0 ? 200 : statuses[data[0] % std::size(statuses)];
    // The first byte may also be the beginning of the JSON text.
    const std::string body(data + (size == 0 || data[0] == '{' ? 0 : 1), data + size);
    RequireTokens(body, size > 0 && data[0] == '{' ? 200 : status);
    RequireDevice(body, size > 0 && data[0] == '{' ? 200 : status);
    const auto pushed = ParsePushedReply(ReplyOf(body, status), Address);
    if (const Failure* const failure = FailureOf(pushed))
        OrlindexTest::RequireGoodLine(*failure);
    return 0;
}
