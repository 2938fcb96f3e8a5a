#include "identity/openid/AuthorizationRequest.h"

#include "identity/Base64Url.h"
#include "identity/openid/HttpHeaders.h"
#include "identity/openid/Limits.h"
#include "identity/openid/ReplyJson.h"
#include "identity/openid/TokenReply.h"
#include "identity/openid/Url.h"

namespace Kestrany::Agent::OpenId {

namespace {

constexpr std::size_t RandomBytes = 32; // As RFC 7636 recommends for the verifier.

Secret RandomSecret(const RandomSource& random)
{
    char bytes[RandomBytes];
    random(bytes, sizeof bytes);
    std::string text = Base64Url({bytes, sizeof bytes});
    Secret secret(text);
    ClearText(text);
    ClearMemory(bytes, sizeof bytes);
    return secret;
}

} // namespace

std::string CodeChallenge(const Secret& verifier, Signatures& signatures)
{
    return Base64Url(signatures.Digest(HashAlgorithm::Sha256, verifier.View()));
}

std::string WithOpenIdScope(const std::string& scope)
{
    static const std::string openId = "openid";
    if ((" " + scope + " ").find(" " + openId + " ") != std::string::npos)
        return scope;
    return scope.empty() ? openId : openId + " " + scope;
}

SignInSecrets MakeSignInSecrets(const RandomSource& random)
{
    return {RandomSecret(random), RandomSecret(random), RandomText(random, RandomBytes)};
}

Secret AuthorizationParameters(const AuthorizationRequest& request, const SignInSecrets& secrets,
                               Signatures& signatures)
{
    Secret form;
    AppendParameter(form, "response_type", "code");
    AppendParameter(form, "client_id", request.clientId);
    AppendParameter(form, "redirect_uri", request.redirectUri);
    AppendParameter(form, "scope", WithOpenIdScope(request.scope));
    AppendParameter(form, "state", secrets.state.View());
    AppendParameter(form, "nonce", secrets.nonce);
    AppendParameter(form, "code_challenge", CodeChallenge(secrets.verifier, signatures));
    AppendParameter(form, "code_challenge_method", "S256");
    for (const auto& [name, value] : request.additionalParameters)
        AppendParameter(form, name, value);
    return form;
}

Outcome<std::string> ParsePushedReply(const HttpReply& reply, const std::string& url)
{
    if (std::optional<Failure> failure = TransportFailure(reply, url))
        return *std::move(failure);
    const std::string expected = "status 201 with \"request_uri\" from " + Shown(url);
    if (reply.status == 429 || reply.status >= 500)
        return Failure{IdProviderFailed, expected, DescribeReply(reply)};
    std::string problem;
    const std::optional<Json::Value> root = ParseObject(reply.body.View(), problem);
    if (reply.status != 201 && reply.status != 200)
    {
        const ProviderError error = root ? ReadProviderError(*root, {}) : ProviderError();
        return Failure{IdPushedRequestRefused, expected, DescribeReply(reply) + error.Suffix()};
    }
    const std::optional<std::string> requestUri =
        root ? TextMember(*root, "request_uri", Limits::Address) : std::nullopt;
    if (MediaType(reply.contentType) != "application/json" || !requestUri)
        return Failure{IdPushedRequestRefused, expected, DescribeReply(reply) + " without it"};
    return *requestUri;
}

Secret AuthorizationAddress(const std::string& endpoint, const Secret& parameters)
{
    return WithQuery(endpoint, parameters);
}

Secret PushedAuthorizationAddress(const std::string& endpoint, const std::string& clientId,
                                  const std::string& requestUri)
{
    Secret form;
    AppendParameter(form, "client_id", clientId);
    AppendParameter(form, "request_uri", requestUri);
    return WithQuery(endpoint, form);
}

std::string RedirectUri(const std::string& host, unsigned int port, const std::string& path)
{
    return "http://" + host + ":" + std::to_string(port) + path;
}

} // namespace Kestrany::Agent::OpenId
