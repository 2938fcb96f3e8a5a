#ifndef AGENT_IDENTITY_OPENID_JWS_H
#define AGENT_IDENTITY_OPENID_JWS_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "identity/openid/Failure.h"
#include "identity/openid/Services.h"

namespace Kestrany::Agent::OpenId {

/// An algorithm of JSON Web Signatures (RFC 7518) that is allowed. "none" and the HS* family are not: the first signs
/// nothing, and for the second a public key would be the secret.
struct SigningAlgorithm
{
    std::string_view name; ///< "alg".
    SignatureScheme scheme;
    HashAlgorithm hash;
    PublicKey::Type keyType; ///< The only type that the algorithm is used with.
};

/// Null for a name that is not allowed.
const SigningAlgorithm* FindSigningAlgorithm(std::string_view name);

/// A signed token in its compact form (RFC 7515), taken apart; nothing is verified yet. Its parts are cleared.
struct SignedToken
{
    SignedToken() = default;
    SignedToken(SignedToken&&) = default;
    SignedToken& operator=(SignedToken&&) = default;
    SignedToken(const SignedToken&) = delete;
    SignedToken& operator=(const SignedToken&) = delete;
    ~SignedToken();

    const SigningAlgorithm* algorithm = nullptr;
    std::optional<std::string> keyId; ///< "kid".
    std::string_view signedText;      ///< Header and payload as they were signed; a part of the token.
    std::string payload;
    std::string signature;
};

/// Takes a token apart. Refuses every token with an algorithm that is not allowed, with a critical extension ("crit"),
/// or of another type than "JWT". Keys and addresses of keys in the header are never used.
Outcome<SignedToken> ParseSignedToken(std::string_view token);

// --- Keys -----------------------------------------------------------------------------------------------------------

/// A public key of a provider's set (RFC 7517).
struct ProviderKey
{
    PublicKey key;
    std::optional<std::string> keyId;
    std::optional<std::string> algorithm; ///< "alg": the only algorithm that the key is for.
};

/// Parses a key set. Keys that are not for signatures, of an unknown type, too short or malformed are passed over, as
/// RFC 7517 says.
Outcome<std::vector<ProviderKey>> ParseKeySet(const HttpReply& reply, const std::string& url);

/// The keys that may have signed the token: of the algorithm's type, and with the token's key ID if it has one.
std::vector<const ProviderKey*> SelectKeys(const std::vector<ProviderKey>& keys, const SignedToken& token);

} // namespace Kestrany::Agent::OpenId

#endif
