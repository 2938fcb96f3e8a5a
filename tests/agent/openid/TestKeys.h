#ifndef ORLINDEX_TESTS_AGENT_OPENID_TESTKEYS_H
#define ORLINDEX_TESTS_AGENT_OPENID_TESTKEYS_H

#include <string>

#include "identity/openid/Services.h"

namespace Kestrany::Agent::OpenId {

/// A key pair of a test's provider.
struct TestKey
{
    PublicKey key;
    std::string privateNumber; ///< "d", big-endian.
};

/// The keys of RFC 7515 (A.2 and A.3), others of RFC 7520 (3.3, without its private number) and RFC 7517 (A.2), and one
/// on P-384.
const TestKey& RsaTestKey();
const TestKey& P256TestKey();
const TestKey& OtherP256TestKey();
const TestKey& P384TestKey();
const TestKey& OtherRsaTestKey();
const TestKey& TestKeyOfType(PublicKey::Type type);

} // namespace Kestrany::Agent::OpenId

#endif
