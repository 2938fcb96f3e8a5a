#include "identity/openid/IdToken.h"

#include <algorithm>

#include "identity/Base64Url.h"
#include "identity/openid/Limits.h"
#include "identity/openid/ReplyJson.h"

namespace Kestrany::Agent::OpenId {

namespace {

using std::chrono::seconds;

Failure Refused(std::string expected, std::string came)
{
    return {IdIdTokenRefused, std::move(expected), std::move(came)};
}

std::string ShownMember(const Json::Value& claims, std::string_view name)
{
    const Json::Value& member = Member(claims, name);
    if (member.isNull())
        return "no \"" + std::string(name) + "\"";
    return "\"" + std::string(name) + "\" " + (member.isString() ? Shown(member.asString()) : "that is no text");
}

std::int64_t ToSeconds(TimePoint time)
{
    return std::chrono::duration_cast<seconds>(time.time_since_epoch()).count();
}

/// The checks of one token, in their order.
class ClaimChecks
{
public:
    ClaimChecks(const SignedToken& token, const Json::Value& claims, const IdTokenExpectation& expectation,
                Signatures& signatures)
        : token_(token), claims_(claims), expectation_(expectation), signatures_(signatures)
    {
    }

    std::optional<Failure> First(IdTokenClaims& result) const
    {
        std::optional<Failure> failure = CheckIssuer();
        if (!failure)
            failure = CheckAudience();
        if (!failure)
            failure = CheckAuthorizedParty();
        if (!failure)
            failure = CheckSubject(result);
        if (!failure)
            failure = CheckTimes(result);
        if (!failure)
            failure = CheckNonce();
        if (!failure)
            failure = CheckAccessTokenHash();
        return failure;
    }

private:
    std::optional<Failure> CheckIssuer() const
    {
        if (Member(claims_, "iss") == expectation_.issuer)
            return std::nullopt;
        return Refused("an ID token of the issuer " + Shown(expectation_.issuer), ShownMember(claims_, "iss"));
    }

    std::optional<Failure> CheckAudience() const
    {
        const Json::Value& audience = Member(claims_, "aud");
        if (audience.isString() && audience == expectation_.clientId)
            return std::nullopt;
        const std::string expected = "an ID token for the client " + Shown(expectation_.clientId);
        if (!audience.isArray())
            return Refused(expected, ShownMember(claims_, "aud"));
        if (audience.size() > Limits::Audiences ||
            !std::all_of(audience.begin(), audience.end(), [](const Json::Value& each) { return each.isString(); }))
            return Refused(expected, "\"aud\" that is too long or not of texts");
        if (std::find(audience.begin(), audience.end(), expectation_.clientId) == audience.end())
            return Refused(expected, "\"aud\" of " + std::to_string(audience.size()) + " other clients");
        if (audience.size() > 1 && Member(claims_, "azp").isNull())
            return Refused("\"azp\" in an ID token for several clients", "none");
        return std::nullopt;
    }

    std::optional<Failure> CheckAuthorizedParty() const
    {
        if (Member(claims_, "azp").isNull() || Member(claims_, "azp") == expectation_.clientId)
            return std::nullopt;
        return Refused("an ID token issued to the client " + Shown(expectation_.clientId), ShownMember(claims_, "azp"));
    }

    std::optional<Failure> CheckSubject(IdTokenClaims& result) const
    {
        const std::optional<std::string> subject = TextMember(claims_, "sub", Limits::Subject);
        if (!subject)
            return Refused("\"sub\" of 1 to " + std::to_string(Limits::Subject) + " bytes",
                           Member(claims_, "sub").isNull() ? "no \"sub\"" : "another value");
        result.subject = *subject;
        if (expectation_.subject.empty() || *subject == expectation_.subject)
            return std::nullopt;
        return Failure{IdSubjectDiffers, "an ID token of the user who signed in", "\"sub\" of another user"};
    }

    std::optional<Failure> CheckTimes(IdTokenClaims& result) const
    {
        const std::optional<std::int64_t> expiry = SecondsMember(claims_, "exp");
        const std::optional<std::int64_t> issuedAt = SecondsMember(claims_, "iat");
        const std::optional<std::int64_t> notBefore = SecondsMember(claims_, "nbf");
        if (!expiry)
            return Refused("\"exp\" as a number of seconds", ValueOrNone("exp"));
        if (!issuedAt)
            return Refused("\"iat\" as a number of seconds", ValueOrNone("iat"));
        if (!notBefore && !Member(claims_, "nbf").isNull())
            return Refused("\"nbf\" as a number of seconds", ValueOrNone("nbf"));
        const std::int64_t now = ToSeconds(expectation_.now);
        const std::int64_t tolerance = expectation_.clockTolerance.count();
        if (*expiry <= now - tolerance)
            return WrongTime("an ID token that has not expired", "\"exp\"", now - *expiry, "ago");
        if (*issuedAt > now + tolerance)
            return WrongTime("an ID token that was issued by now", "\"iat\"", *issuedAt - now, "from now");
        if (notBefore && *notBefore > now + tolerance)
            return WrongTime("an ID token that is valid by now", "\"nbf\"", *notBefore - now, "from now");
        result.expiry = *expiry;
        result.issuedAt = *issuedAt;
        return std::nullopt;
    }

    /// A time that this machine's clock makes wrong is not the token's mistake.
    Failure WrongTime(const std::string& expected, const std::string& claim, std::int64_t distance,
                      const char* direction) const
    {
        const std::string tolerance = std::to_string(expectation_.clockTolerance.count()) + " seconds";
        if (expectation_.providerTime)
        {
            const std::int64_t difference = ToSeconds(*expectation_.providerTime) - ToSeconds(expectation_.now);
            if (difference > expectation_.clockTolerance.count() || -difference > expectation_.clockTolerance.count())
                return {IdClockOff, "a clock within " + tolerance + " of the provider's",
                        "a difference of " + std::to_string(difference) + " seconds"};
        }
        return Refused(expected + ", within " + tolerance,
                       claim + " " + std::to_string(distance) + " seconds " + direction);
    }

    std::string ValueOrNone(const char* claim) const
    {
        return Member(claims_, claim).isNull() ? "no \"" + std::string(claim) + "\"" : "another value";
    }

    std::optional<Failure> CheckNonce() const
    {
        using Nonce = IdTokenExpectation::Nonce;
        const Json::Value& nonce = Member(claims_, "nonce");
        if (nonce.isNull() && expectation_.nonceUse == Nonce::Required)
            return Refused("the nonce of the request", "no \"nonce\"");
        if (nonce.isNull())
            return std::nullopt;
        if (expectation_.nonceUse == Nonce::NoneSent)
            return Refused("no \"nonce\", because none was sent", "one");
        if (!nonce.isString() || !AreEqualSecrets(nonce.asString(), expectation_.nonce))
            return Refused("the nonce of the request", "another one");
        return std::nullopt;
    }

    std::optional<Failure> CheckAccessTokenHash() const
    {
        const Json::Value& hash = Member(claims_, "at_hash");
        if (hash.isNull())
            return std::nullopt;
        const std::string digest = signatures_.Digest(token_.algorithm->hash, expectation_.accessToken);
        if (hash == Base64Url(std::string_view(digest).substr(0, digest.size() / 2)))
            return std::nullopt;
        return Refused("\"at_hash\" of the access token in the same reply", "another one");
    }

    const SignedToken& token_;
    const Json::Value& claims_;
    const IdTokenExpectation& expectation_;
    Signatures& signatures_;
};

} // namespace

bool IsSignedByOneOf(const std::vector<const ProviderKey*>& keys, const SignedToken& token, Signatures& signatures)
{
    return std::any_of(keys.begin(), keys.end(), [&](const ProviderKey* key) {
        return signatures.Verify(key->key, token.algorithm->scheme, token.algorithm->hash, token.signedText,
                                 token.signature);
    });
}

Outcome<IdTokenClaims> CheckClaims(const SignedToken& token, const IdTokenExpectation& expectation,
                                   Signatures& signatures)
{
    const std::vector<std::string>& algorithms = expectation.algorithms;
    if (!algorithms.empty() &&
        std::find(algorithms.begin(), algorithms.end(), token.algorithm->name) == algorithms.end())
        return Refused("an algorithm that the provider lists", "\"alg\" " + Shown(token.algorithm->name));
    std::string problem;
    std::optional<Json::Value> claims = ParseObject(token.payload, problem);
    if (!claims)
        return Refused("an ID token whose payload is JSON", problem);
    IdTokenClaims result;
    if (std::optional<Failure> failure = ClaimChecks(token, *claims, expectation, signatures).First(result))
        return *std::move(failure);
    result.all = *std::move(claims);
    return result;
}

} // namespace Kestrany::Agent::OpenId
