// The reference that the tests of ID tokens stand on, with the examples of its standards.

#include <gtest/gtest.h>

#include "ReferenceSignatures.h"
#include "SignatureVectors.h"
#include "identity/openid/AuthorizationRequest.h"
#include "identity/openid/Jws.h"

namespace Kestrany::Agent::OpenId {

namespace {

constexpr char Rfc7515Payload[] =
    "eyJpc3MiOiJqb2UiLA0KICJleHAiOjEzMDA4MTkzODAsDQogImh0dHA6Ly9leGFtcGxlLmNvbS9pc19yb290Ijp0cnVlfQ";

class ReferenceSignaturesTest : public testing::TestWithParam<SignatureVector>
{
};

TEST_P(ReferenceSignaturesTest, OnlyTheRightSignatureIsValid)
{
    ReferenceSignatures signatures;
    ExpectOnlyTheRightSignature(signatures, GetParam());
}

std::string NameOf(const testing::TestParamInfo<SignatureVector>& info)
{
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Vectors, ReferenceSignaturesTest, testing::ValuesIn(SignatureVectors()), NameOf);

TEST(SignaturesTest, HashesFollowFips180)
{
    ReferenceSignatures signatures;
    ExpectHashes(signatures);
}

TEST(SignaturesTest, ASaltOfAnotherLengthIsRefused)
{
    ReferenceSignatures signatures;
    ExpectShortSaltIsRefused(signatures);
}

TEST(SignaturesTest, TheChallengeIsThatOfRfc7636AppendixB)
{
    ReferenceSignatures signatures;
    EXPECT_EQ(CodeChallenge(Secret("dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk"), signatures),
              "E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM");
}

TEST(SignaturesTest, TheExampleOfRfc7515A1IsRefused)
{
    // HS256: the algorithm for which a public key would be the secret.
    const Outcome<SignedToken> parsed =
        ParseSignedToken(std::string("eyJ0eXAiOiJKV1QiLA0KICJhbGciOiJIUzI1NiJ9.") + Rfc7515Payload +
                         ".dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk");
    ASSERT_NE(FailureOf(parsed), nullptr);
    EXPECT_EQ(FailureOf(parsed)->code, IdIdTokenRefused);
    EXPECT_EQ(FailureOf(parsed)->came, "\"alg\" \"HS256\"");
}

TEST(SignaturesTest, TheExampleOfRfc7515A5IsRefused)
{
    const Outcome<SignedToken> parsed = ParseSignedToken(std::string("eyJhbGciOiJub25lIn0.") + Rfc7515Payload + ".");
    ASSERT_NE(FailureOf(parsed), nullptr);
    EXPECT_EQ(FailureOf(parsed)->came, "\"alg\" \"none\"");
}

} // namespace

} // namespace Kestrany::Agent::OpenId
