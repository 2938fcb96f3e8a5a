#ifndef AGENT_IDENTITY_OPENID_WINDOWS_CNGSIGNATURES_H
#define AGENT_IDENTITY_OPENID_WINDOWS_CNGSIGNATURES_H

#include "identity/openid/Services.h"

namespace Kestrany::Agent::OpenId {

/// Hashes and signatures by the system's cryptography.
class CngSignatures final : public Signatures
{
public:
    std::string Digest(HashAlgorithm algorithm, std::string_view bytes) override;
    bool Verify(const PublicKey& key, SignatureScheme scheme, HashAlgorithm hash, std::string_view text,
                std::string_view signature) override;
};

} // namespace Kestrany::Agent::OpenId

#endif
