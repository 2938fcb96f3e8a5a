#include "signins/IdToken.h"

#include <cstdint>
#include <ctime>
#include <memory>

#include <json/reader.h>

#include "signins/Cryptography.h"
#include "signins/Require.h"

namespace OrlindexBench {

namespace {

constexpr std::int64_t Tolerance = 60; // Seconds that the clocks may differ.

bool IsSignedBy(const Json::Value& keySet, const Json::Value& header, const std::string& text,
                const std::string& signature)
{
    for (const Json::Value& key : keySet["keys"])
    {
        if (key["kid"] == header["kid"] && key["kty"] == "RSA" && key["use"] == "sig" &&
            IsSignature(FromBase64Url(key["n"].asString()), FromBase64Url(key["e"].asString()), text, signature))
            return true;
    }
    return false;
}

} // namespace

Json::Value ParseJson(const std::string& text)
{
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value value;
    Require(reader->parse(text.data(), text.data() + text.size(), &value, nullptr) && value.isObject(),
            "a reply is not an object");
    return value;
}

Json::Value VerifyIdToken(const std::string& token, const Json::Value& keySet, const Expectation& expectation)
{
    const std::size_t first = token.find('.');
    const std::size_t second = token.find('.', first + 1);
    Require(second != std::string::npos, "the ID token has no three parts");
    const Json::Value header = ParseJson(FromBase64Url(token.substr(0, first)));
    Require(header["alg"] == "RS256", "another algorithm");
    Require(IsSignedBy(keySet, header, token.substr(0, second), FromBase64Url(token.substr(second + 1))),
            "the signature does not match");
    const Json::Value claims = ParseJson(FromBase64Url(token.substr(first + 1, second - first - 1)));
    Require(claims["iss"] == expectation.issuer && claims["aud"] == expectation.client, "another issuer or audience");
    Require(claims["nonce"] == expectation.nonce, "another sign-in");
    const std::int64_t now = std::time(nullptr);
    Require(claims["exp"].asInt64() > now - Tolerance && claims["iat"].asInt64() < now + Tolerance, "expired");
    Require(!claims.isMember("at_hash") ||
                claims["at_hash"] == ToBase64Url(Sha256(expectation.accessToken).substr(0, 16)),
            "another access token");
    return claims;
}

} // namespace OrlindexBench
