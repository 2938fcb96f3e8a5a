#ifndef AGENT_IDENTITY_OPENID_IDTOKEN_H
#define AGENT_IDENTITY_OPENID_IDTOKEN_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <json/value.h>

#include "identity/openid/Failure.h"
#include "identity/openid/Jws.h"
#include "identity/openid/Services.h"

namespace Kestrany::Agent::OpenId {

/// What an ID token is compared with.
struct IdTokenExpectation
{
    /// Whether the token must repeat the nonce of the request.
    enum class Nonce
    {
        Required,  ///< After an authorization request.
        IfPresent, ///< After a refresh: the claim may be missing.
        NoneSent   ///< After a device grant, whose request has no nonce: the claim must be missing.
    };

    std::string issuer;
    std::string clientId;
    Nonce nonceUse = Nonce::Required;
    std::string nonce;
    /// The access token of the same reply, for "at_hash".
    std::string_view accessToken;
    /// The subject of an earlier token of the same login; empty for none.
    std::string subject;
    TimePoint now;
    std::chrono::seconds clockTolerance{60};
    /// The provider's time when it sent the token; nullopt if it sent none.
    std::optional<TimePoint> providerTime;
    /// "id_token_signing_alg_values_supported"; empty if the provider does not list them.
    std::vector<std::string> algorithms;
};

/// The claims of a verified ID token.
struct IdTokenClaims
{
    std::string subject;
    std::int64_t issuedAt = 0; ///< Seconds since 1970.
    std::int64_t expiry = 0;
    Json::Value all{Json::objectValue};
};

/// Whether one of the keys made the token's signature.
bool IsSignedByOneOf(const std::vector<const ProviderKey*>& keys, const SignedToken& token, Signatures& signatures);

/// Compares the claims of a token whose signature is verified (OpenID Connect Core 1.0, 3.1.3.7 and 12.2). The order of
/// the checks is fixed: the first failure is returned.
Outcome<IdTokenClaims> CheckClaims(const SignedToken& token, const IdTokenExpectation& expectation,
                                   Signatures& signatures);

} // namespace Kestrany::Agent::OpenId

#endif
