// What a sign-in makes of a provider that does one thing wrong: the cases of the relying-party tests of the OpenID
// Foundation for the code flow and for discovery, and those of RFC 8725 and RFC 9700. In each, the failure and its log
// line are the documented ones, and the next sign-in at the corrected provider works.

#include <gtest/gtest.h>

#include <functional>
#include <ostream>

#include "TestProvider.h"
#include "identity/Base64Url.h"
#include "identity/Json.h"

namespace Kestrany::Agent::OpenId {

namespace {

struct Case
{
    const char* name;
    std::function<void(TestProvider&)> change;
    IdErrorCode code; ///< IdSuccess: the sign-in works all the same.
    const char* came; ///< A part of the log line.
};

void PrintTo(const Case& each, std::ostream* stream)
{
    *stream << each.name;
}

Json::Value Seconds(std::int64_t fromNow)
{
    return static_cast<Json::Int64>(TestProvider::Now + fromNow);
}

/// Signs ID tokens with the algorithm and its key, which the provider publishes.
void SignWith(TestProvider& provider, const std::string& name)
{
    provider.algorithm = name;
    provider.header["alg"] = name;
    provider.key = &TestKeyOfType(FindSigningAlgorithm(name)->keyType);
    provider.keys["keys"][0] = KeyAsJson(*provider.key, "one");
}

void AlterSignature(std::string& token)
{
    const std::size_t point = token.rfind('.');
    std::string signature = *FromBase64Url(std::string_view(token).substr(point + 1));
    signature[7] = static_cast<char>(signature[7] ^ 1);
    token = token.substr(0, point + 1) + Base64Url(signature);
}

/// Replaces the header of a finished token: its signature then belongs to another one.
std::function<void(std::string&)> WithHeader(const Json::Value& header)
{
    return [header](std::string& token) { token = Base64Url(WriteJson(header)) + token.substr(token.find('.')); };
}

Json::Value Header(const std::string& algorithm)
{
    Json::Value header(Json::objectValue);
    header["alg"] = algorithm;
    header["kid"] = "one";
    return header;
}

Json::Value SetOf(const std::vector<Json::Value>& keys)
{
    Json::Value set(Json::objectValue);
    set["keys"] = Json::Value(Json::arrayValue);
    for (const Json::Value& key : keys)
        set["keys"].append(key);
    return set;
}

std::function<void(TestProvider&)> Claim(const char* name, const Json::Value& value)
{
    return [=](TestProvider& provider) { provider.claims[name] = value; };
}

std::function<void(TestProvider&)> Metadatum(const char* name, const Json::Value& value)
{
    return [=](TestProvider& provider) { provider.metadata[name] = value; };
}

std::function<void(TestProvider&)> BadSignatureBy(const char* algorithm)
{
    return [=](TestProvider& provider) {
        SignWith(provider, algorithm);
        provider.changeIdToken = AlterSignature;
    };
}

std::function<void(TestProvider&)> GoodSignatureBy(const char* algorithm)
{
    return [=](TestProvider& provider) { SignWith(provider, algorithm); };
}

std::function<void(TestProvider&)> IdTokenText(const char* text)
{
    return [=](TestProvider& provider) { provider.changeIdToken = [=](std::string& token) { token = text; }; };
}

Json::Value List(const std::vector<const char*>& texts)
{
    Json::Value list(Json::arrayValue);
    for (const char* const text : texts)
        list.append(text);
    return list;
}

std::vector<Case> SignatureCases()
{
    return {
        {"SignatureByRs256", GoodSignatureBy("RS256"), IdSuccess, ""},
        {"SignatureByRs384", GoodSignatureBy("RS384"), IdSuccess, ""},
        {"SignatureByRs512", GoodSignatureBy("RS512"), IdSuccess, ""},
        {"SignatureByPs256", GoodSignatureBy("PS256"), IdSuccess, ""},
        {"SignatureByPs384", GoodSignatureBy("PS384"), IdSuccess, ""},
        {"SignatureByPs512", GoodSignatureBy("PS512"), IdSuccess, ""},
        {"SignatureByEs256", GoodSignatureBy("ES256"), IdSuccess, ""},
        {"SignatureByEs384", GoodSignatureBy("ES384"), IdSuccess, ""},
        {"BadSignatureByRs256", BadSignatureBy("RS256"), IdIdTokenRefused, "a signature that does not match"},
        {"BadSignatureByRs384", BadSignatureBy("RS384"), IdIdTokenRefused, "a signature that does not match"},
        {"BadSignatureByRs512", BadSignatureBy("RS512"), IdIdTokenRefused, "a signature that does not match"},
        {"BadSignatureByPs256", BadSignatureBy("PS256"), IdIdTokenRefused, "a signature that does not match"},
        {"BadSignatureByPs384", BadSignatureBy("PS384"), IdIdTokenRefused, "a signature that does not match"},
        {"BadSignatureByPs512", BadSignatureBy("PS512"), IdIdTokenRefused, "a signature that does not match"},
        {"BadSignatureByEs256", BadSignatureBy("ES256"), IdIdTokenRefused, "a signature that does not match"},
        {"BadSignatureByEs384", BadSignatureBy("ES384"), IdIdTokenRefused, "a signature that does not match"},
        {"AlgorithmNone",
         [](TestProvider& provider) {
             provider.changeIdToken = [](std::string& token) {
                 token = Base64Url(R"({"alg":"none"})") +
                         token.substr(token.find('.'), token.rfind('.') - token.find('.') + 1);
             };
         },
         IdIdTokenRefused, "\"alg\" \"none\""},
        {"AlgorithmNoneInOtherLetters",
         [](TestProvider& provider) { provider.changeIdToken = WithHeader(Header("nOnE")); }, IdIdTokenRefused,
         "\"alg\" \"nOnE\""},
        {"AlgorithmHs256", [](TestProvider& provider) { provider.changeIdToken = WithHeader(Header("HS256")); },
         IdIdTokenRefused, "\"alg\" \"HS256\""},
        {"AlgorithmEs512", [](TestProvider& provider) { provider.changeIdToken = WithHeader(Header("ES512")); },
         IdIdTokenRefused, "\"alg\" \"ES512\""},
        {"AlgorithmEdDsa", [](TestProvider& provider) { provider.changeIdToken = WithHeader(Header("EdDSA")); },
         IdIdTokenRefused, "\"alg\" \"EdDSA\""},
        {"AlgorithmMissing",
         [](TestProvider& provider) { provider.changeIdToken = WithHeader(Json::Value(Json::objectValue)); },
         IdIdTokenRefused, "\"alg\" missing"},
        {"AlgorithmThatIsNotListed", Metadatum("id_token_signing_alg_values_supported", List({"RS256"})),
         IdIdTokenRefused, "\"alg\" \"ES256\""},
        {"AlgorithmThatIsListed", Metadatum("id_token_signing_alg_values_supported", List({"RS256", "ES256"})),
         IdSuccess, ""},
        {"SignatureEmpty",
         [](TestProvider& provider) {
             provider.changeIdToken = [](std::string& token) { token.resize(token.rfind('.') + 1); };
         },
         IdIdTokenRefused, "a signature that does not match"},
        {"SignatureCutOff",
         [](TestProvider& provider) {
             provider.changeIdToken = [](std::string& token) { token.resize(token.size() - 4); };
         },
         IdIdTokenRefused, ""},
        {"PayloadOfAnotherToken",
         [](TestProvider& provider) {
             provider.changeIdToken = [](std::string& token) {
                 token = token.substr(0, token.find('.') + 1) + Base64Url(R"({"sub":"other"})") +
                         token.substr(token.rfind('.'));
             };
         },
         IdIdTokenRefused, "a signature that does not match"},
        {"CriticalExtension", [](TestProvider& provider) { provider.header["crit"] = List({"exp"}); }, IdIdTokenRefused,
         "\"crit\" in its header"},
        {"TypeOfAccessTokens", [](TestProvider& provider) { provider.header["typ"] = "at+jwt"; }, IdIdTokenRefused,
         "\"typ\" \"at+jwt\""},
        {"TypeInLowerCase", [](TestProvider& provider) { provider.header["typ"] = "jwt"; }, IdSuccess, ""},
        {"KeyInTheHeader",
         [](TestProvider& provider) {
             // A token that brings its own key: the key is not used.
             provider.keys["keys"][0] = KeyAsJson(P384TestKey(), "one");
             provider.header["jwk"] = KeyAsJson(P256TestKey(), "one");
         },
         IdIdTokenRefused, "a key that is not in the set, or is of another type"},
        {"EncryptedToken", IdTokenText("a.b.c.d.e"), IdIdTokenRefused, "encrypted tokens are not supported"},
        {"TwoParts", IdTokenText("eyJhbGciOiJFUzI1NiJ9.e30"), IdIdTokenRefused, "another number of parts"},
        {"NoBase64url", IdTokenText("eyJhbGciOiJFUzI1NiJ9.e30=.AAAA"), IdIdTokenRefused, "another character"},
        {"HeaderThatIsNoJson", IdTokenText("AAAA.e30.AAAA"), IdIdTokenRefused, "a text that is not"},
        {"HeaderWithRepeatedMember", IdTokenText("eyJhbGciOiJub25lIiwiYWxnIjoiRVMyNTYifQ.e30.AAAA"), IdIdTokenRefused,
         "a text that is not JSON"},
        {"TokenTooLong",
         [](TestProvider& provider) { provider.changeIdToken = [](std::string& token) { token.append(70'000, 'A'); }; },
         IdTokenReplyMalformed, "no usable \"id_token\""},
        {"TokenMissing", [](TestProvider& provider) { provider.tokens["id_token"] = Json::nullValue; },
         IdIdTokenRefused, "expected an ID token; came none"},
    };
}

std::vector<Case> KeyCases()
{
    const Json::Value p256 = KeyAsJson(P256TestKey(), "");
    const Json::Value p384 = KeyAsJson(P384TestKey(), "");
    const Json::Value rsa = KeyAsJson(RsaTestKey(), "");
    const Json::Value otherRsa = KeyAsJson(OtherRsaTestKey(), "");
    const auto withMember = [](Json::Value key, const char* name, const Json::Value& value) {
        key[name] = value;
        return key;
    };
    const auto noKeyId = [](TestProvider& provider) { provider.header.removeMember("kid"); };
    return {
        {"KeyIdAbsentWithOneKey",
         [=](TestProvider& provider) {
             noKeyId(provider);
             provider.keys = SetOf({p256});
         },
         IdSuccess, ""},
        {"KeyIdAbsentWithSeveralKeys",
         [=](TestProvider& provider) {
             SignWith(provider, "RS256");
             noKeyId(provider);
             provider.keys = SetOf({p256, otherRsa, p384, rsa});
         },
         IdSuccess, ""},
        {"KeyIdAbsentAndNoKeyFits",
         [=](TestProvider& provider) {
             SignWith(provider, "RS256");
             noKeyId(provider);
             provider.keys = SetOf({p256, otherRsa});
         },
         IdIdTokenRefused, "a signature that does not match"},
        {"KeyIdUnknown", [](TestProvider& provider) { provider.header["kid"] = "two"; }, IdIdTokenRefused,
         "a key that is not in the set"},
        {"KeyIdThatIsNoText", [](TestProvider& provider) { provider.header["kid"] = 1; }, IdIdTokenRefused,
         "expected an ID token whose \"kid\" is a short text"},
        {"KeyOfWrongType", [=](TestProvider& provider) { provider.keys = SetOf({withMember(rsa, "kid", "one")}); },
         IdIdTokenRefused, "of another type"},
        {"KeyOfOtherCurve", [=](TestProvider& provider) { provider.keys = SetOf({withMember(p384, "kid", "one")}); },
         IdIdTokenRefused, "of another type"},
        {"KeyForEncryption", [](TestProvider& provider) { provider.keys["keys"][0]["use"] = "enc"; }, IdIdTokenRefused,
         "a key that is not in the set"},
        {"KeyForSignaturesOnly", [](TestProvider& provider) { provider.keys["keys"][0]["use"] = "sig"; }, IdSuccess,
         ""},
        {"KeyForOtherOperations",
         [](TestProvider& provider) { provider.keys["keys"][0]["key_ops"] = List({"encrypt"}); }, IdIdTokenRefused,
         "a key that is not in the set"},
        {"KeyForVerification", [](TestProvider& provider) { provider.keys["keys"][0]["key_ops"] = List({"verify"}); },
         IdSuccess, ""},
        {"KeyForAnotherAlgorithm",
         [](TestProvider& provider) {
             SignWith(provider, "RS256");
             provider.keys["keys"][0]["alg"] = "PS256";
         },
         IdIdTokenRefused, "a key that is not in the set"},
        {"RsaKeyOf1024Bits",
         [](TestProvider& provider) {
             SignWith(provider, "RS256");
             provider.keys["keys"][0]["n"] = "6I3MmgALJLdTeB-aViBr2aYCzIAPrJgxUfHbJW-"
                                             "uMJP4xY4gXch196RFHBydoLTz6xeiy3CQxvSKoofxMJjj7bwPpFCzNZO5Yvo8XbJm"
                                             "Dolv9XpA-OoBndd376P2nQCl3uonUM3JwVjq8oDKQkUE5H2PbWlDygUpPrIVbxuGgB0";
         },
         IdIdTokenRefused, "a key that is not in the set"},
        {"RsaExponentOne",
         [](TestProvider& provider) {
             SignWith(provider, "RS256");
             provider.keys["keys"][0]["e"] = "AQ";
         },
         IdIdTokenRefused, "a key that is not in the set"},
        {"CoordinatesCutOff", [](TestProvider& provider) { provider.keys["keys"][0]["x"] = "AQAB"; }, IdIdTokenRefused,
         "a key that is not in the set"},
        {"PointThatIsNotOnTheCurve",
         [](TestProvider& provider) { provider.keys["keys"][0]["y"] = Base64Url(std::string(32, '\1')); },
         IdIdTokenRefused, "a signature that does not match"},
        {"UnknownKeysBesideTheRightOne",
         [=](TestProvider& provider) {
             provider.keys = SetOf({withMember(Json::Value(Json::objectValue), "kty", "OKP"), Json::Value(7),
                                    withMember(p384, "crv", "P-999"), withMember(p256, "kid", "one")});
         },
         IdSuccess, ""},
        {"KeySetThatIsHtml",
         [](TestProvider& provider) {
             provider.hooks["/keys"] = [](const HttpRequest&) { return TextReply("<html>", "text/html"); };
         },
         IdKeysMalformed, "status 200 with \"text/html\""},
        {"KeySetWithoutKeys", [](TestProvider& provider) { provider.keys = Json::Value(Json::objectValue); },
         IdKeysMalformed, "JSON without a list of keys"},
        {"KeySetEmpty", [](TestProvider& provider) { provider.keys = SetOf({}); }, IdIdTokenRefused,
         "a key that is not in the set"},
        {"KeySetMissing",
         [](TestProvider& provider) {
             provider.hooks["/keys"] = [](const HttpRequest&) { return TextReply("", "", 404); };
         },
         IdProviderFailed, "status 404"},
        {"KeySetBehindARedirect",
         [](TestProvider& provider) {
             provider.hooks["/keys"] = [](const HttpRequest&) { return TextReply("", "", 302); };
         },
         IdProviderFailed, "status 302, a redirect, which is not followed"},
        {"KeySetNestedTooDeeply",
         [](TestProvider& provider) {
             provider.hooks["/keys"] = [](const HttpRequest&) {
                 return TextReply("{\"keys\":" + std::string(1000, '[') + std::string(1000, ']') + "}",
                                  "application/json");
             };
         },
         IdKeysMalformed, "nested too deeply"},
        {"KeySetWithTooManyValues",
         [](TestProvider& provider) {
             provider.hooks["/keys"] = [](const HttpRequest&) {
                 std::string list = "0";
                 for (int index = 0; index < 20'000; ++index)
                     list += ",0";
                 return TextReply("{\"keys\":[" + list + "]}", "application/json");
             };
         },
         IdKeysMalformed, "too many values"},
    };
}

std::vector<Case> ClaimCases()
{
    return {
        {"NonceOfAnotherSignIn", Claim("nonce", "other"), IdIdTokenRefused,
         "expected the nonce of the request; came another one"},
        {"NonceMissing", [](TestProvider& provider) { provider.claims["nonce"] = Json::nullValue; }, IdIdTokenRefused,
         "no \"nonce\""},
        {"NonceThatIsNoText", Claim("nonce", 1), IdIdTokenRefused, "another one"},
        {"IssuerOfAnotherProvider", Claim("iss", "https://other.example.com"), IdIdTokenRefused,
         "expected an ID token of the issuer \"https://login.example.com\"; came \"iss\" "
         "\"https://other.example.com\""},
        {"IssuerWithASlashMore", Claim("iss", "https://login.example.com/"), IdIdTokenRefused, "\"iss\""},
        {"IssuerMissing", Claim("iss", Json::nullValue), IdIdTokenRefused, "no \"iss\""},
        {"AudienceOfAnotherClient", Claim("aud", "other"), IdIdTokenRefused, "\"aud\" \"other\""},
        {"AudienceOfOtherClients", Claim("aud", List({"a", "b"})), IdIdTokenRefused, "\"aud\" of 2 other clients"},
        {"AudienceMissing", Claim("aud", Json::nullValue), IdIdTokenRefused, "no \"aud\""},
        {"AudienceEmpty", Claim("aud", Json::Value(Json::arrayValue)), IdIdTokenRefused, "\"aud\" of 0 other clients"},
        {"AudienceThatIsNoText", Claim("aud", 7), IdIdTokenRefused, "\"aud\" that is no text"},
        {"AudienceAsAList", Claim("aud", List({"client"})), IdSuccess, ""},
        {"SeveralAudiencesWithoutAuthorizedParty", Claim("aud", List({"client", "other"})), IdIdTokenRefused,
         "expected \"azp\" in an ID token for several clients; came none"},
        {"SeveralAudiencesWithAuthorizedParty",
         [](TestProvider& provider) {
             provider.claims["aud"] = List({"client", "other"});
             provider.claims["azp"] = "client";
         },
         IdSuccess, ""},
        {"AuthorizedPartyIsAnotherClient", Claim("azp", "other"), IdIdTokenRefused, "\"azp\" \"other\""},
        {"SubjectMissing", Claim("sub", Json::nullValue), IdIdTokenRefused, "no \"sub\""},
        {"SubjectEmpty", Claim("sub", ""), IdIdTokenRefused, "expected \"sub\" of 1 to 255 bytes; came another value"},
        {"SubjectTooLong", Claim("sub", std::string(256, 'a')), IdIdTokenRefused, "another value"},
        {"SubjectThatIsNoText", Claim("sub", 7), IdIdTokenRefused, "another value"},
        {"Expired", Claim("exp", Seconds(-61)), IdIdTokenRefused, "\"exp\" 61 seconds ago"},
        {"ExpiredWithinTheTolerance", Claim("exp", Seconds(-59)), IdSuccess, ""},
        {"ExpiryMissing", Claim("exp", Json::nullValue), IdIdTokenRefused, "no \"exp\""},
        {"ExpiryAsAText", Claim("exp", "1700000600"), IdIdTokenRefused, "expected \"exp\" as a number of seconds"},
        {"ExpiryBeyondEveryNumber", Claim("exp", 1e300), IdIdTokenRefused, "expected \"exp\" as a number of seconds"},
        {"ExpiryWithAFraction", Claim("exp", static_cast<double>(TestProvider::Now) + 10.5), IdSuccess, ""},
        {"IssuedInTheFuture", Claim("iat", Seconds(61)), IdIdTokenRefused, "\"iat\" 61 seconds from now"},
        {"IssuedInTheFutureWithinTheTolerance", Claim("iat", Seconds(60)), IdSuccess, ""},
        {"IssueTimeMissing", Claim("iat", Json::nullValue), IdIdTokenRefused, "no \"iat\""},
        {"IssueTimeAsAText", Claim("iat", "now"), IdIdTokenRefused, "expected \"iat\" as a number of seconds"},
        {"NotYetValid", Claim("nbf", Seconds(120)), IdIdTokenRefused, "\"nbf\" 120 seconds from now"},
        {"ClockOff",
         [](TestProvider& provider) {
             provider.claims["iat"] = Seconds(3600);
             provider.claims["exp"] = Seconds(7200);
             provider.hooks["/token"] = [&provider](const HttpRequest& request) -> std::optional<HttpReply> {
                 provider.hooks.erase("/token");
                 HttpReply reply = provider.Send(request);
                 reply.date = "Tue, 14 Nov 2023 23:13:20 GMT"; // An hour later.
                 return reply;
             };
         },
         IdClockOff, "expected a clock within 60 seconds of the provider's; came a difference of 3600 seconds"},
        {"AccessTokenHashOfAnotherToken", Claim("at_hash", "77QmUPtjPfzWtF2AnpK9RQ"), IdIdTokenRefused,
         "expected \"at_hash\" of the access token in the same reply"},
        {"AccessTokenHashThatIsNoText", Claim("at_hash", 7), IdIdTokenRefused, "another one"},
        {"AccessTokenHash",
         [](TestProvider& provider) {
             ReferenceSignatures signatures;
             provider.claims["at_hash"] = Base64Url(signatures.Digest(HashAlgorithm::Sha256, "access-1").substr(0, 16));
         },
         IdSuccess, ""},
        {"AccessTokenHashByTheAlgorithmsHash",
         [](TestProvider& provider) {
             ReferenceSignatures signatures;
             SignWith(provider, "RS512");
             provider.claims["at_hash"] = Base64Url(signatures.Digest(HashAlgorithm::Sha512, "access-1").substr(0, 32));
         },
         IdSuccess, ""},
    };
}

std::vector<Case> DiscoveryCases()
{
    return {
        {"IssuerMismatchInDiscovery", Metadatum("issuer", "https://other.example.com"), IdDiscoveryOfOtherIssuer,
         "came \"https://other.example.com\""},
        {"IssuerMissingInDiscovery", Metadatum("issuer", Json::nullValue), IdDiscoveryOfOtherIssuer, "came none"},
        {"PkceOnlyPlain", Metadatum("code_challenge_methods_supported", List({"plain"})), IdPkceNotOffered,
         "other methods"},
        {"PkceNotListed", Metadatum("code_challenge_methods_supported", Json::nullValue), IdPkceNotOffered,
         "no list of methods"},
        {"TokenEndpointOverHttp", Metadatum("token_endpoint", "http://login.example.com/token"), IdDiscoveryMalformed,
         "expected \"token_endpoint\" with an https address; came \"http://login.example.com/token\""},
        {"TokenEndpointOnThisMachineOverHttp", Metadatum("token_endpoint", "http://127.0.0.1:80/token"),
         IdDiscoveryMalformed, "\"token_endpoint\""},
        {"AuthorizationEndpointThatIsAScript", Metadatum("authorization_endpoint", "javascript:alert(1)"),
         IdDiscoveryMalformed, "\"authorization_endpoint\""},
        {"AuthorizationEndpointThatIsAFile", Metadatum("authorization_endpoint", "file:///C:/Windows/calc.exe"),
         IdDiscoveryMalformed, "\"authorization_endpoint\""},
        {"AuthorizationEndpointWithAUser", Metadatum("authorization_endpoint", "https://login.example.com@evil.test/"),
         IdDiscoveryMalformed, "\"authorization_endpoint\""},
        {"AuthorizationEndpointWithAFragment", Metadatum("authorization_endpoint", "https://login.example.com/#a"),
         IdDiscoveryMalformed, "\"authorization_endpoint\""},
        {"UserInfoEndpointThatIsNoAddress", Metadatum("userinfo_endpoint", 7), IdDiscoveryMalformed,
         "\"userinfo_endpoint\""},
        {"KeySetAddressMissing", Metadatum("jwks_uri", Json::nullValue), IdDiscoveryMalformed,
         "expected \"jwks_uri\" with an https address; came none"},
        {"CodeFlowNotOffered", Metadatum("response_types_supported", List({"id_token"})), IdDiscoveryMalformed,
         "other response types"},
        {"PushedRequestsRequiredWithoutEndpoint",
         [](TestProvider& provider) {
             provider.metadata["require_pushed_authorization_requests"] = true;
             provider.metadata.removeMember("pushed_authorization_request_endpoint");
         },
         IdDiscoveryMalformed, "\"pushed_authorization_request_endpoint\""},
    };
}

using Reply = std::function<HttpReply(const HttpRequest&)>;

std::vector<Case> TransportCases()
{
    struct Behavior
    {
        const char* name;
        Reply reply;
        IdErrorCode discovery;
        IdErrorCode token;
        const char* came;
    };
    static const std::vector<Behavior> behaviors = {
        {"NameUnknown", [](const HttpRequest&) { return ProblemReply(HttpProblem::NameNotResolved); },
         IdProviderUnreachable, IdProviderUnreachable, "no address for the host name"},
        {"NotConnected", [](const HttpRequest&) { return ProblemReply(HttpProblem::NotConnected); },
         IdProviderUnreachable, IdProviderUnreachable, "no connection"},
        {"TlsRefused", [](const HttpRequest&) { return ProblemReply(HttpProblem::TlsRefused); }, IdTlsRefused,
         IdTlsRefused, "not trusted"},
        {"NoAnswer", [](const HttpRequest&) { return ProblemReply(HttpProblem::TimedOut); }, IdProviderUnreachable,
         IdProviderUnreachable, "no complete reply in time"},
        {"ConnectionClosed", [](const HttpRequest&) { return ProblemReply(HttpProblem::ConnectionLost); },
         IdProviderUnreachable, IdProviderUnreachable, "the end of the connection"},
        {"EndlessAnswer", [](const HttpRequest&) { return ProblemReply(HttpProblem::ReplyTooLarge); }, IdReplyTooLarge,
         IdReplyTooLarge, "more bytes than are read"},
        {"SystemError", [](const HttpRequest&) { return ProblemReply(HttpProblem::Failed); }, IdProviderUnreachable,
         IdProviderUnreachable, "an error of the system"},
        {"Html", [](const HttpRequest&) { return TextReply("<html>", "text/html"); }, IdDiscoveryMalformed,
         IdTokenReplyMalformed, "status 200 with \"text/html\""},
        {"HalfAJson", [](const HttpRequest&) { return TextReply("{\"issuer\":", "application/json"); },
         IdDiscoveryMalformed, IdTokenReplyMalformed, "a text that is not JSON"},
        {"EmptyAnswer", [](const HttpRequest&) { return TextReply("", "application/json"); }, IdDiscoveryMalformed,
         IdTokenReplyMalformed, "an empty reply"},
        {"NoMediaType", [](const HttpRequest&) { return TextReply("{}", ""); }, IdDiscoveryMalformed,
         IdTokenReplyMalformed, "without a media type"},
        {"JsonList", [](const HttpRequest&) { return TextReply("[]", "application/json"); }, IdDiscoveryMalformed,
         IdTokenReplyMalformed, "JSON that is no object"},
        {"NotUtf8", [](const HttpRequest&) { return TextReply("{\"a\":\"\xFF\"}", "application/json"); },
         IdDiscoveryMalformed, IdTokenReplyMalformed, "not UTF-8"},
        {"Redirect", [](const HttpRequest&) { return TextReply("", "", 307); }, IdDiscoveryMalformed, IdProviderFailed,
         "a redirect, which is not followed"},
        {"TooManyRequests", [](const HttpRequest&) { return TextReply("", "", 429); }, IdProviderFailed,
         IdProviderFailed, "status 429"},
        {"ServerError", [](const HttpRequest&) { return TextReply("", "", 500); }, IdProviderFailed, IdProviderFailed,
         "status 500"},
        {"ServerErrorWithAnError",
         [](const HttpRequest&) { return TextReply("{\"error\":\"invalid_grant\"}", "application/json", 500); },
         IdProviderFailed, IdProviderFailed, "status 500"},
        {"Unavailable", [](const HttpRequest&) { return TextReply("", "", 503); }, IdProviderFailed, IdProviderFailed,
         "status 503"},
        {"NotFound", [](const HttpRequest&) { return TextReply("", "text/html", 404); }, IdDiscoveryMalformed,
         IdTokenEndpointError, "status 404"},
    };
    static std::vector<std::string> names;
    std::vector<Case> cases;
    names.reserve(2 * behaviors.size()); // The cases point into it.
    for (const Behavior& behavior : behaviors)
    {
        const auto add = [&](const char* where, const char* path, IdErrorCode code) {
            names.push_back(std::string(behavior.name) + where);
            cases.push_back({names.back().c_str(),
                             [reply = behavior.reply, path](TestProvider& provider) {
                                 provider.hooks[path] = [reply](const HttpRequest& request) { return reply(request); };
                             },
                             code, behavior.came});
        };
        add("AtDiscovery", "/.well-known/openid-configuration", behavior.discovery);
        add("AtTheTokenEndpoint", "/token", behavior.token);
    }
    return cases;
}

std::vector<Case> TokenReplyCases()
{
    const auto error = [](const char* body, int status) {
        return [=](TestProvider& provider) {
            provider.hooks["/token"] = [=](const HttpRequest&) { return TextReply(body, "application/json", status); };
        };
    };
    const auto member = [](const char* name, const Json::Value& value) {
        return [=](TestProvider& provider) { provider.tokens[name] = value; };
    };
    return {
        {"CodeRefused", error(R"({"error":"invalid_grant","error_description":"code is expired"})", 400),
         IdGrantRefused, "the error \"invalid_grant\" with the text \"code is expired\""},
        {"ClientRefused", error(R"({"error":"invalid_client"})", 401), IdTokenEndpointError, "\"invalid_client\""},
        {"ErrorWithStatus200", error(R"({"error":"invalid_client"})", 200), IdTokenEndpointError, "\"invalid_client\""},
        {"ErrorThatRepeatsTheCode", error(R"({"error":"x","error_description":"bad code code-1!"})", 400),
         IdTokenEndpointError, "with the text \"bad code *!\""},
        {"ErrorWithControlCharacters", error(R"({"error":"x","error_description":"a\nb\u001b[1m"})", 400),
         IdTokenEndpointError, "\"a?b?[1m\""},
        {"TokenTypeInLowerCase", member("token_type", "bearer"), IdSuccess, ""},
        {"TokenTypeMissing", member("token_type", Json::nullValue), IdTokenReplyMalformed, "no \"token_type\""},
        {"TokenTypeDpop", member("token_type", "DPoP"), IdTokenReplyMalformed, "tokens of type \"DPoP\""},
        {"AccessTokenMissing", member("access_token", Json::nullValue), IdTokenReplyMalformed, "\"access_token\""},
        {"AccessTokenThatIsNoText", member("access_token", 7), IdTokenReplyMalformed, "\"access_token\""},
        {"AccessTokenWithALineBreak", member("access_token", "a\r\nb"), IdTokenReplyMalformed, "not plain ASCII"},
        {"AccessTokenTooLong", member("access_token", std::string(66'000, 'a')), IdTokenReplyMalformed,
         "\"access_token\""},
        {"AccessTokenOf5000Characters", member("access_token", std::string(5000, 'a')), IdSuccess, ""},
        {"RefreshTokenThatIsNoText", member("refresh_token", Json::Value(Json::objectValue)), IdTokenReplyMalformed,
         "\"refresh_token\""},
        {"RefreshTokenMissing", member("refresh_token", Json::nullValue), IdSuccess, ""},
        {"LifetimeMissing", member("expires_in", Json::nullValue), IdSuccess, ""},
        {"LifetimeAsAText", member("expires_in", "300"), IdSuccess, ""},
        {"LifetimeNegative", member("expires_in", -5), IdSuccess, ""},
        {"ScopeNarrower", member("scope", "openid"), IdSuccess, ""},
        {"EscapedMemberName", error(R"({"access\u005ftoken":"a","token_type":"Bearer"})", 200), IdTokenReplyMalformed,
         "an escaped member name"},
    };
}

class RelyingPartyTest : public testing::TestWithParam<Case>
{
};

TEST_P(RelyingPartyTest, TheResultIsTheDocumentedOneAndTheNextSignInWorks)
{
    TestProvider provider;
    const TestProvider correct;
    GetParam().change(provider);
    const Outcome<Grant> outcome = provider.SignIn();
    const Failure* const failure = FailureOf(outcome);
    if (GetParam().code == IdSuccess)
    {
        ASSERT_EQ(failure, nullptr) << LogLine(*failure);
        EXPECT_EQ(ResultOf(outcome).claims->subject, "user-1");
        return;
    }
    ASSERT_NE(failure, nullptr);
    const std::string line = LogLine(*failure);
    EXPECT_EQ(failure->code, GetParam().code) << line;
    EXPECT_NE(line.find(GetParam().came), std::string::npos) << line;
    EXPECT_NE(line.find("(" + std::to_string(static_cast<int>(failure->code)) + ")"), std::string::npos) << line;

    provider.metadata = correct.metadata;
    provider.keys = correct.keys;
    provider.header = correct.header;
    provider.claims = correct.claims;
    provider.tokens = correct.tokens;
    provider.key = correct.key;
    provider.algorithm = correct.algorithm;
    provider.changeIdToken = nullptr;
    provider.hooks.clear();
    const Outcome<Grant> next = provider.SignIn();
    EXPECT_EQ(FailureOf(next), nullptr) << LogLine(*FailureOf(next));
}

std::string NameOf(const testing::TestParamInfo<Case>& info)
{
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Signature, RelyingPartyTest, testing::ValuesIn(SignatureCases()), NameOf);
INSTANTIATE_TEST_SUITE_P(Keys, RelyingPartyTest, testing::ValuesIn(KeyCases()), NameOf);
INSTANTIATE_TEST_SUITE_P(Claims, RelyingPartyTest, testing::ValuesIn(ClaimCases()), NameOf);
INSTANTIATE_TEST_SUITE_P(Discovery, RelyingPartyTest, testing::ValuesIn(DiscoveryCases()), NameOf);
INSTANTIATE_TEST_SUITE_P(Transport, RelyingPartyTest, testing::ValuesIn(TransportCases()), NameOf);
INSTANTIATE_TEST_SUITE_P(TokenReply, RelyingPartyTest, testing::ValuesIn(TokenReplyCases()), NameOf);

} // namespace

} // namespace Kestrany::Agent::OpenId
