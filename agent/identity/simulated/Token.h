#ifndef AGENT_IDENTITY_SIMULATED_TOKEN_H
#define AGENT_IDENTITY_SIMULATED_TOKEN_H

#include <chrono>
#include <functional>
#include <string>

#include <json/value.h>

#include "identity/Base64Url.h"

namespace Kestrany::Agent::Simulated {

using TimePoint = std::chrono::system_clock::time_point;
using Clock = std::function<TimePoint()>;

/// A bearer token.
struct Token
{
    std::string text;
    TimePoint expiry;
};

/// Signs tokens with ECDSA on P-256 and SHA-256 (ES256).
struct TokenSigner
{
    std::string keyId; ///< The "kid" under which the public key is published.
    /// Returns the signature of a text: r and s, 32 bytes each. Throws on failure.
    std::function<std::string(const std::string& text)> sign;
};

/// A JSON Web Token in its compact form: header of `type`, claims and signature.
std::string WriteJwt(const TokenSigner& signer, const char* type, const Json::Value& claims);

/// Whether a token that WriteJwt wrote has this type and the signer's key.
bool IsSignedBy(const TokenSigner& signer, const char* type, const std::string& token);

} // namespace Kestrany::Agent::Simulated

#endif
