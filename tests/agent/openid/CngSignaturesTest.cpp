// Hashes and signatures by the system's cryptography.

#include <gtest/gtest.h>

#include "SignatureVectors.h"
#include "TestKeys.h"
#include "identity/openid/Jws.h"
#include "identity/openid/windows/CngSignatures.h"

namespace Kestrany::Agent::OpenId {

namespace {

class CngSignaturesTest : public testing::TestWithParam<SignatureVector>
{
};

TEST_P(CngSignaturesTest, OnlyTheRightSignatureIsValid)
{
    CngSignatures signatures;
    ExpectOnlyTheRightSignature(signatures, GetParam());
}

std::string NameOf(const testing::TestParamInfo<SignatureVector>& info)
{
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Vectors, CngSignaturesTest, testing::ValuesIn(SignatureVectors()), NameOf);

TEST(CngHashesTest, HashesFollowFips180)
{
    CngSignatures signatures;
    ExpectHashes(signatures);
}

TEST(CngHashesTest, ASaltOfAnotherLengthIsRefused)
{
    CngSignatures signatures;
    ExpectShortSaltIsRefused(signatures);
}

TEST(CngHashesTest, AKeyThatDoesNotFitTheSchemeVerifiesNothing)
{
    CngSignatures signatures;
    const std::string signature(256, 'a');
    EXPECT_FALSE(signatures.Verify(RsaTestKey().key, SignatureScheme::Ecdsa, HashAlgorithm::Sha256, "a", signature));
    EXPECT_FALSE(signatures.Verify(P256TestKey().key, SignatureScheme::RsaPkcs1, HashAlgorithm::Sha256, "a",
                                   std::string(64, 'a')));
    EXPECT_FALSE(signatures.Verify(PublicKey(), SignatureScheme::RsaPkcs1, HashAlgorithm::Sha256, "a", ""));
    PublicKey shortKey = P256TestKey().key;
    shortKey.x.pop_back();
    EXPECT_FALSE(signatures.Verify(shortKey, SignatureScheme::Ecdsa, HashAlgorithm::Sha256, "a", std::string(64, 'a')));
}

} // namespace

} // namespace Kestrany::Agent::OpenId
