#ifndef AGENT_SESSION_JWT_H
#define AGENT_SESSION_JWT_H

#include <functional>
#include <string>

#include <json/value.h>

namespace Kestrany::Agent {

/// Signs tokens with ECDSA on P-256 and SHA-256 (ES256).
struct TokenSigner
{
    std::string keyId; ///< The "kid" under which the public key is published.
    /// The signature of a text: r and s, 32 bytes each. Throws when it cannot sign.
    std::function<std::string(const std::string& text)> sign;
};

/// A JSON Web Token in its compact form: header of `type`, claims and signature.
std::string WriteJwt(const TokenSigner& signer, const char* type, const Json::Value& claims);

/// Whether a token that WriteJwt has written is of this type and of the signer's key.
bool IsSignedBy(const TokenSigner& signer, const char* type, const std::string& token);

} // namespace Kestrany::Agent

#endif
