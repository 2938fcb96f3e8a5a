// The key set of an OpenID Connect provider.

#include <cstdint>
#include <string>

#include "OpenIdReplies.h"
#include "identity/openid/Jws.h"
#include "identity/openid/Limits.h"

using namespace Kestrany::Agent;
using namespace Kestrany::Agent::OpenId;
using OrlindexTest::Require;

namespace {

void RequireGoodKey(const PublicKey& key)
{
    if (key.type != PublicKey::Type::Rsa)
    {
        const std::size_t size = key.type == PublicKey::Type::P256 ? 32 : 48;
        Require(key.x.size() == size && key.y.size() == size, "coordinates have the size of the curve");
        return;
    }
    Require(key.modulus.size() >= Limits::SmallestModulus && key.modulus.size() <= Limits::LargestModulus,
            "a modulus is neither short nor huge");
    Require(key.modulus.front() != '\0' && !key.exponent.empty() && key.exponent.size() <= Limits::LargestExponent,
            "numbers have no leading zeros");
    Require((key.exponent.back() & 1) != 0 && key.exponent != "\1", "an exponent is odd and not 1");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto outcome = ParseKeySet(OrlindexTest::ReplyOf(std::string(data, data + size)), "https://a.example/keys");
    if (const Failure* const failure = FailureOf(outcome))
    {
        OrlindexTest::RequireGoodLine(*failure);
        return 0;
    }
    Require(ResultOf(outcome).size() <= Limits::Keys, "the number of keys is limited");
    SignedToken token;
    token.algorithm = FindSigningAlgorithm("RS256");
    for (const ProviderKey& key : ResultOf(outcome))
    {
        RequireGoodKey(key.key);
        token.keyId = key.keyId;
        for (const ProviderKey* const selected : SelectKeys(ResultOf(outcome), token))
            Require(selected->key.type == PublicKey::Type::Rsa, "an algorithm has keys of its type only");
    }
    return 0;
}
