// ID tokens: any text, and any header and payload, which are two lines of the input.

#include <cstdint>
#include <string>

#include "OpenIdReplies.h"
#include "identity/Base64Url.h"
#include "identity/openid/IdToken.h"

using namespace Kestrany::Agent;
using namespace Kestrany::Agent::OpenId;
using OrlindexTest::Require;

namespace {

/// Says yes to every signature: what comes after it is tested here.
class EverySignature final : public Signatures
{
public:
    std::string Digest(HashAlgorithm algorithm, std::string_view) override
    {
        return std::string(algorithm == HashAlgorithm::Sha256 ? 32 : algorithm == HashAlgorithm::Sha384 ? 48 : 64, 'd');
    }
    bool Verify(const PublicKey&, SignatureScheme, HashAlgorithm, std::string_view, std::string_view) override
    {
        return true;
    }
};

void RequireChecked(const std::string& token)
{
    const auto parsed = ParseSignedToken(token);
    if (const Failure* const failure = FailureOf(parsed))
        return OrlindexTest::RequireGoodLine(*failure);
    const SignedToken& signedToken = ResultOf(parsed);
    Require(token.compare(0, signedToken.signedText.size(), signedToken.signedText) == 0,
            "the signed text is the token's");
    IdTokenExpectation expectation;
    expectation.issuer = "https://a.example";
    expectation.clientId = "client";
    expectation.nonce = "nonce";
    expectation.now = TimePoint(std::chrono::seconds(1'700'000'000));
    EverySignature signatures;
    const auto outcome = CheckClaims(signedToken, expectation, signatures);
    if (const Failure* const failure = FailureOf(outcome))
        return OrlindexTest::RequireGoodLine(*failure);
    const IdTokenClaims& claims = ResultOf(outcome);
    Require(claims.all["iss"] == "https://a.example", "the issuer is the expected one");
    Require(claims.all["nonce"] == "nonce", "the nonce is the expected one");
    Require(!claims.subject.empty() && claims.subject.size() <= 255, "the subject is short");
    Require(claims.expiry > 1'700'000'000 - 60 && claims.issuedAt <= 1'700'000'000 + 60, "the token is valid now");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(data, data + size);
    RequireChecked(text);
    const std::size_t line = text.find('\n');
    if (line != std::string::npos)
        RequireChecked(Base64Url(text.substr(0, line)) + "." + Base64Url(text.substr(line + 1)) + ".c2ln");
    return 0;
}
