#ifndef AGENT_IDENTITY_OPENID_TOKENREPLY_H
#define AGENT_IDENTITY_OPENID_TOKENREPLY_H

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <json/value.h>

#include "identity/openid/Failure.h"
#include "identity/openid/Secret.h"
#include "identity/openid/Services.h"

namespace Kestrany::Agent::OpenId {

/// The tokens of a successful reply (RFC 6749, 5.1). Only the access token is always there.
struct TokenReply
{
    Secret accessToken;
    Secret idToken;
    Secret refreshToken;
    std::optional<std::chrono::seconds> lifetime; ///< Of the access token; nullopt if the provider does not say it.
    std::optional<TimePoint> providerTime;        ///< When the provider sent the reply, if it says so.
};

/// An error that a provider returns (RFC 6749, 5.2). Its texts are ready for log lines.
struct ProviderError
{
    std::string error;       ///< Such as "invalid_grant"; empty if the reply has none.
    std::string description; ///< In quotes, and without secrets; empty if there is none.

    /// The error and its text, as they follow the description of a reply.
    std::string Suffix() const;
};

/// Reads the members of an error. `secrets`: what the request held, which the texts must not repeat.
ProviderError ReadProviderError(const Json::Value& root, const std::vector<std::string_view>& secrets);

/// Tokens, the provider's error, or why the reply is neither.
using TokenOutcome = std::variant<TokenReply, ProviderError, Failure>;

/// Parses a reply of the token endpoint, whose body is cleared.
TokenOutcome ParseTokenReply(HttpReply reply, const std::string& url, const std::vector<std::string_view>& secrets);

/// What the provider's error means after a code or a refresh token was presented.
Failure GrantFailure(const ProviderError& error, const std::string& url);

} // namespace Kestrany::Agent::OpenId

#endif
