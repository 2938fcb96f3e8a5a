#include "identity/openid/TokenReply.h"

#include <algorithm>

#include "identity/openid/HttpHeaders.h"
#include "identity/openid/Limits.h"
#include "identity/openid/ReplyJson.h"

namespace Kestrany::Agent::OpenId {

namespace {

Failure Malformed(const std::string& url, std::string came)
{
    return {IdTokenReplyMalformed, "tokens from " + Shown(url), std::move(came)};
}

/// "Bearer" in any case: some providers write it in lower case.
bool IsBearer(const std::string& type)
{
    static constexpr std::string_view bearer = "bearer";
    return std::equal(type.begin(), type.end(), bearer.begin(), bearer.end(), [](char one, char other) {
        return (one >= 'A' && one <= 'Z' ? static_cast<char>(one - 'A' + 'a') : one) == other;
    });
}

/// nullopt if the member is there and no usable token.
std::optional<Secret> TakeToken(SecretObject& object, const char* name)
{
    const Json::Value& member = Member(object.Root(), name);
    if (member.isNull())
        return Secret();
    Secret token = object.Take(member);
    if (token.IsEmpty() || token.Size() > Limits::Token)
        return std::nullopt;
    return token;
}

TokenOutcome ReadTokens(SecretObject& object, const std::string& url, std::optional<TimePoint> providerTime,
                        const std::vector<std::string_view>& secrets)
{
    const std::optional<std::string> type = TextMember(object.Root(), "token_type", Limits::ShownText);
    if (!type || !IsBearer(*type))
        return Malformed(url, type ? "tokens of type " + ShownWithout(*type, secrets) : "no \"token_type\"");
    TokenReply tokens;
    tokens.providerTime = providerTime;
    std::optional<Secret> access = TakeToken(object, "access_token");
    std::optional<Secret> id = TakeToken(object, "id_token");
    std::optional<Secret> refresh = TakeToken(object, "refresh_token");
    if (!access || access->IsEmpty())
        return Malformed(url, "no usable \"access_token\"");
    if (!id || !refresh)
        return Malformed(url, std::string("no usable \"") + (id ? "refresh_token" : "id_token") + "\"");
    tokens.accessToken = *std::move(access);
    tokens.idToken = *std::move(id);
    tokens.refreshToken = *std::move(refresh);
    if (const auto lifetime = LenientSecondsMember(object.Root(), "expires_in"))
        tokens.lifetime = std::min(std::chrono::seconds(*lifetime), Limits::TokenLifetime);
    return tokens;
}

} // namespace

std::string ProviderError::Suffix() const
{
    if (error.empty())
        return {};
    return " and the error " + Shown(error) + (description.empty() ? "" : " with the text " + description);
}

ProviderError ReadProviderError(const Json::Value& root, const std::vector<std::string_view>& secrets)
{
    ProviderError error;
    if (const Json::Value& member = Member(root, "error"); member.isString())
        error.error = member.asString().substr(0, Limits::ShownText);
    if (const Json::Value& member = Member(root, "error_description"); member.isString())
        error.description = ShownWithout(member.asString(), secrets);
    // A made-up error could repeat a secret, too.
    for (const std::string_view secret : secrets)
    {
        if (!secret.empty() && error.error.find(secret) != std::string::npos)
            error.error = "*";
    }
    return error;
}

TokenOutcome ParseTokenReply(HttpReply reply, const std::string& url, const std::vector<std::string_view>& secrets)
{
    if (std::optional<Failure> failure = TransportFailure(reply, url))
        return *std::move(failure);
    const std::string description = DescribeReply(reply);
    const std::optional<TimePoint> providerTime = ParseHttpDate(reply.date);
    const bool isJson = MediaType(reply.contentType) == "application/json";
    std::string problem = "no JSON";
    std::optional<SecretObject> object;
    if (isJson)
        object = SecretObject::Parse(std::move(reply.body), {"access_token", "refresh_token", "id_token"}, problem);
    if (reply.status == 200 && object && Member(object->Root(), "error").isNull())
        return ReadTokens(*object, url, providerTime, secrets);
    if (reply.status == 200 && !object)
        return Malformed(url, description + ": " + problem);
    ProviderError error = object ? ReadProviderError(object->Root(), secrets) : ProviderError();
    // A server that is overloaded or broken says nothing about the grant, whatever its body holds.
    if (reply.status == 429 || reply.status >= 500 || (reply.status >= 300 && reply.status <= 399))
        return Failure{IdProviderFailed, "status 200 with tokens from " + Shown(url), description + error.Suffix()};
    if (!error.error.empty())
        return error;
    return Failure{IdTokenEndpointError, "status 200 with tokens from " + Shown(url),
                   description + " without an error"};
}

Failure GrantFailure(const ProviderError& error, const std::string& url)
{
    const IdErrorCode code = error.error == "invalid_grant" ? IdGrantRefused : IdTokenEndpointError;
    return {code, "tokens from " + Shown(url),
            "the error " + Shown(error.error) +
                (error.description.empty() ? "" : " with the text " + error.description)};
}

} // namespace Kestrany::Agent::OpenId
