#ifndef ORLINDEX_TESTS_AGENT_OPENID_REFERENCESIGNATURES_H
#define ORLINDEX_TESTS_AGENT_OPENID_REFERENCESIGNATURES_H

#include <string>
#include <string_view>

#include "TestKeys.h"
#include "identity/openid/Services.h"

namespace Kestrany::Agent::OpenId {

/// Hashes and signatures by the text of their standards, for tests: slow, and not safe against timing. No platform
/// service is used, so that sanitizers see every byte.
class ReferenceSignatures final : public Signatures
{
public:
    std::string Digest(HashAlgorithm algorithm, std::string_view bytes) override;
    bool Verify(const PublicKey& key, SignatureScheme scheme, HashAlgorithm hash, std::string_view text,
                std::string_view signature) override;
};

/// Signs a text. The random parts of a signature are derived from the text.
std::string SignForTest(const TestKey& key, SignatureScheme scheme, HashAlgorithm hash, std::string_view text);

} // namespace Kestrany::Agent::OpenId

#endif
