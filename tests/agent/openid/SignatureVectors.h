#ifndef ORLINDEX_TESTS_AGENT_OPENID_SIGNATUREVECTORS_H
#define ORLINDEX_TESTS_AGENT_OPENID_SIGNATUREVECTORS_H

#include <ostream>
#include <string>
#include <vector>

#include "identity/openid/Services.h"

namespace Kestrany::Agent::OpenId {

/// A token whose signature is valid: an example of a standard, or made by another implementation.
struct SignatureVector
{
    std::string name;
    PublicKey key;
    std::string token;
};

/// One for each algorithm at least.
std::vector<SignatureVector> SignatureVectors();

/// For the names of tests.
void PrintTo(const SignatureVector& vector, std::ostream* stream);

/// Expects that the implementation accepts the token's signature, and refuses everything that is not quite it.
void ExpectOnlyTheRightSignature(Signatures& signatures, const SignatureVector& vector);

/// Expects that a PS256 signature whose salt is shorter than the hash is refused: JSON Web Signatures do not allow it.
void ExpectShortSaltIsRefused(Signatures& signatures);

/// Expects the hashes of FIPS 180-4.
void ExpectHashes(Signatures& signatures);

} // namespace Kestrany::Agent::OpenId

#endif
