#include "identity/openid/Jws.h"

#include <algorithm>
#include <iterator>

#include "identity/Base64Url.h"
#include "identity/openid/HttpHeaders.h"
#include "identity/openid/Limits.h"
#include "identity/openid/ReplyJson.h"

namespace Kestrany::Agent::OpenId {

namespace {

using Type = PublicKey::Type;

constexpr SigningAlgorithm Algorithms[] = {
    {"RS256", SignatureScheme::RsaPkcs1, HashAlgorithm::Sha256, Type::Rsa},
    {"RS384", SignatureScheme::RsaPkcs1, HashAlgorithm::Sha384, Type::Rsa},
    {"RS512", SignatureScheme::RsaPkcs1, HashAlgorithm::Sha512, Type::Rsa},
    {"PS256", SignatureScheme::RsaPss, HashAlgorithm::Sha256, Type::Rsa},
    {"PS384", SignatureScheme::RsaPss, HashAlgorithm::Sha384, Type::Rsa},
    {"PS512", SignatureScheme::RsaPss, HashAlgorithm::Sha512, Type::Rsa},
    {"ES256", SignatureScheme::Ecdsa, HashAlgorithm::Sha256, Type::P256},
    {"ES384", SignatureScheme::Ecdsa, HashAlgorithm::Sha384, Type::P384},
};

Failure Refused(std::string expected, std::string came)
{
    return {IdIdTokenRefused, std::move(expected), std::move(came)};
}

/// The parts between the points; empty if there are not three.
std::vector<std::string_view> Parts(std::string_view token)
{
    const std::size_t first = token.find('.');
    const std::size_t second = first == std::string_view::npos ? first : token.find('.', first + 1);
    if (second == std::string_view::npos || token.find('.', second + 1) != std::string_view::npos)
        return {};
    return {token.substr(0, first), token.substr(first + 1, second - first - 1), token.substr(second + 1)};
}

/// Why the header is refused; nullopt if it is not. Fills in what it says.
std::optional<Failure> ReadHeader(const Json::Value& header, SignedToken& token)
{
    const Json::Value& algorithm = Member(header, "alg");
    token.algorithm = algorithm.isString() ? FindSigningAlgorithm(algorithm.asString()) : nullptr;
    if (token.algorithm == nullptr)
        return Refused("an ID token signed with RS256, RS384, RS512, PS256, PS384, PS512, ES256 or ES384",
                       "\"alg\" " + (algorithm.isString() ? Shown(algorithm.asString()) : std::string("missing")));
    if (!Member(header, "crit").isNull())
        return Refused("an ID token without critical extensions", "\"crit\" in its header");
    const Json::Value& type = Member(header, "typ");
    if (!type.isNull() && (!type.isString() || MediaType(type.asString()) != "jwt"))
        return Refused("an ID token of type \"JWT\" or without a type",
                       "\"typ\" " + (type.isString() ? Shown(type.asString()) : std::string("that is no text")));
    if (Member(header, "kid").isNull())
        return std::nullopt;
    token.keyId = TextMember(header, "kid", Limits::KeyId);
    if (!token.keyId)
        return Refused("an ID token whose \"kid\" is a short text", "another value");
    return std::nullopt;
}

/// The number of a base64url member, without leading zeros; empty if there is none.
std::string NumberMember(const Json::Value& key, std::string_view name, std::size_t limit)
{
    const Json::Value& member = Member(key, name);
    const std::optional<std::string> bytes = member.isString() && member.asString().size() <= 2 * limit + 2
                                                 ? FromBase64Url(member.asString())
                                                 : std::nullopt;
    if (!bytes)
        return {};
    std::string number = bytes->substr(std::min(bytes->find_first_not_of('\0'), bytes->size()));
    return number.size() <= limit ? number : std::string();
}

std::optional<PublicKey> ReadRsaKey(const Json::Value& value)
{
    PublicKey key;
    key.type = Type::Rsa;
    key.modulus = NumberMember(value, "n", Limits::LargestModulus);
    key.exponent = NumberMember(value, "e", Limits::LargestExponent);
    // An even number, or an exponent of 1, is no key: everybody could sign.
    const auto isOdd = [](const std::string& number) { return !number.empty() && (number.back() & 1) != 0; };
    const bool isExponentOne = key.exponent == std::string(1, '\1');
    const bool isFullSize = key.modulus.size() > Limits::SmallestModulus ||
                            (key.modulus.size() == Limits::SmallestModulus && (key.modulus.front() & 0x80) != 0);
    if (!isFullSize || !isOdd(key.modulus) || !isOdd(key.exponent) || isExponentOne)
        return std::nullopt;
    return key;
}

std::optional<PublicKey> ReadCurveKey(const Json::Value& value)
{
    const Json::Value& curve = Member(value, "crv");
    const Json::Value& x = Member(value, "x");
    const Json::Value& y = Member(value, "y");
    if (!x.isString() || !y.isString() || (curve != "P-256" && curve != "P-384"))
        return std::nullopt;
    PublicKey key;
    key.type = curve == "P-256" ? Type::P256 : Type::P384;
    const std::size_t size = key.type == Type::P256 ? 32 : 48;
    key.x = FromBase64Url(x.asString()).value_or(std::string());
    key.y = FromBase64Url(y.asString()).value_or(std::string());
    // RFC 7518: the octets have the full size of a coordinate.
    if (key.x.size() != size || key.y.size() != size)
        return std::nullopt;
    return key;
}

bool IsForSignatures(const Json::Value& value)
{
    const Json::Value& use = Member(value, "use");
    const Json::Value& operations = Member(value, "key_ops");
    if (!use.isNull() && use != "sig")
        return false;
    return operations.isNull() ||
           (operations.isArray() && std::find(operations.begin(), operations.end(), "verify") != operations.end());
}

/// nullopt for a key that is passed over.
std::optional<ProviderKey> ReadKey(const Json::Value& value)
{
    const Json::Value& type = Member(value, "kty");
    if (!value.isObject() || !IsForSignatures(value))
        return std::nullopt;
    std::optional<PublicKey> key;
    if (type == "RSA")
        key = ReadRsaKey(value);
    else if (type == "EC")
        key = ReadCurveKey(value);
    if (!key)
        return std::nullopt;
    return ProviderKey{*std::move(key), TextMember(value, "kid", Limits::KeyId),
                       TextMember(value, "alg", Limits::KeyId)};
}

} // namespace

SignedToken::~SignedToken()
{
    ClearText(payload);
    ClearText(signature);
}

const SigningAlgorithm* FindSigningAlgorithm(std::string_view name)
{
    const auto* const found = std::find_if(std::begin(Algorithms), std::end(Algorithms),
                                           [&](const SigningAlgorithm& each) { return each.name == name; });
    return found == std::end(Algorithms) ? nullptr : found;
}

Outcome<SignedToken> ParseSignedToken(std::string_view token)
{
    if (token.size() > Limits::Token)
        return Refused("an ID token of at most " + std::to_string(Limits::Token) + " bytes",
                       std::to_string(token.size()) + " bytes");
    const std::vector<std::string_view> parts = Parts(token);
    if (parts.empty())
        return Refused("an ID token of three parts", "another number of parts; encrypted tokens are not supported");
    const std::optional<std::string> headerText =
        parts[0].size() <= Limits::TokenHeader ? FromBase64Url(parts[0]) : std::nullopt;
    std::string problem = "a header that is too long or no base64url text";
    const std::optional<Json::Value> header = headerText ? ParseObject(*headerText, problem) : std::nullopt;
    if (!header)
        return Refused("an ID token whose header is JSON", problem);
    SignedToken parsed;
    if (std::optional<Failure> failure = ReadHeader(*header, parsed))
        return *std::move(failure);
    std::optional<std::string> payload = FromBase64Url(parts[1]);
    std::optional<std::string> signature = FromBase64Url(parts[2]);
    if (!payload || !signature)
        return Refused("an ID token of base64url texts", "another character or a wrong length");
    parsed.signedText = token.substr(0, parts[0].size() + 1 + parts[1].size());
    parsed.payload = *std::move(payload);
    parsed.signature = *std::move(signature);
    return parsed;
}

Outcome<std::vector<ProviderKey>> ParseKeySet(const HttpReply& reply, const std::string& url)
{
    if (std::optional<Failure> failure = TransportFailure(reply, url))
        return *std::move(failure);
    const std::string type = MediaType(reply.contentType);
    if (reply.status != 200)
        return Failure{IdProviderFailed, "status 200 with a key set from " + Shown(url), DescribeReply(reply)};
    if (type != "application/json" && type != "application/jwk-set+json")
        return Failure{IdKeysMalformed, "a key set as JSON from " + Shown(url), DescribeReply(reply)};
    std::string problem;
    const std::optional<Json::Value> root = ParseObject(reply.body.View(), problem);
    if (!root || !Member(*root, "keys").isArray())
        return Failure{IdKeysMalformed, "a key set with \"keys\" from " + Shown(url),
                       root ? "JSON without a list of keys" : problem};
    std::vector<ProviderKey> keys;
    for (const Json::Value& value : (*root)["keys"])
    {
        std::optional<ProviderKey> key = ReadKey(value);
        if (key && keys.size() < Limits::Keys)
            keys.push_back(*std::move(key));
    }
    return keys;
}

std::vector<const ProviderKey*> SelectKeys(const std::vector<ProviderKey>& keys, const SignedToken& token)
{
    std::vector<const ProviderKey*> selected;
    for (const ProviderKey& candidate : keys)
    {
        const bool isOfType = candidate.key.type == token.algorithm->keyType;
        const bool isForAlgorithm = !candidate.algorithm || *candidate.algorithm == token.algorithm->name;
        const bool isNamed = !token.keyId || candidate.keyId == token.keyId;
        if (isOfType && isForAlgorithm && isNamed && selected.size() < Limits::KeysTried)
            selected.push_back(&candidate);
    }
    return selected;
}

} // namespace Kestrany::Agent::OpenId
