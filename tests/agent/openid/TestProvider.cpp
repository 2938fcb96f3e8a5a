#include "TestProvider.h"

#include <algorithm>

#include "identity/Base64Url.h"
#include "identity/Json.h"
#include "identity/openid/Url.h"

namespace Kestrany::Agent::OpenId {

HttpReply TextReply(const std::string& body, const std::string& contentType, int status)
{
    HttpReply reply;
    reply.status = status;
    reply.contentType = contentType;
    reply.body = Secret(body);
    return reply;
}

HttpReply JsonReply(const Json::Value& body, int status)
{
    return TextReply(WriteJson(body), "application/json; charset=utf-8", status);
}

HttpReply ProblemReply(HttpProblem problem)
{
    HttpReply reply;
    reply.problem = problem;
    return reply;
}

Json::Value KeyAsJson(const TestKey& key, const std::string& keyId)
{
    Json::Value object(Json::objectValue);
    if (!keyId.empty())
        object["kid"] = keyId;
    if (key.key.type == PublicKey::Type::Rsa)
    {
        object["kty"] = "RSA";
        object["n"] = Base64Url(key.key.modulus);
        object["e"] = Base64Url(key.key.exponent);
        return object;
    }
    object["kty"] = "EC";
    object["crv"] = key.key.type == PublicKey::Type::P256 ? "P-256" : "P-384";
    object["x"] = Base64Url(key.key.x);
    object["y"] = Base64Url(key.key.y);
    return object;
}

std::string SignedText(const Json::Value& header, const std::string& payload, const TestKey& key,
                       const SigningAlgorithm& algorithm)
{
    const std::string text = Base64Url(WriteJson(header)) + "." + Base64Url(payload);
    return text + "." + Base64Url(SignForTest(key, algorithm.scheme, algorithm.hash, text));
}

TestProvider::TestProvider() : key(&P256TestKey())
{
    const std::string issuer = Issuer;
    config.issuer = issuer;
    metadata["issuer"] = issuer;
    metadata["authorization_endpoint"] = issuer + "/authorize";
    metadata["token_endpoint"] = issuer + "/token";
    metadata["jwks_uri"] = issuer + "/keys";
    metadata["userinfo_endpoint"] = issuer + "/userinfo";
    metadata["revocation_endpoint"] = issuer + "/revoke";
    metadata["end_session_endpoint"] = issuer + "/logout";
    metadata["device_authorization_endpoint"] = issuer + "/device";
    metadata["pushed_authorization_request_endpoint"] = issuer + "/par";
    metadata["response_types_supported"].append("code");
    metadata["code_challenge_methods_supported"].append("S256");
    metadata["authorization_response_iss_parameter_supported"] = true;
    keys["keys"].append(KeyAsJson(*key, "one"));
    header["alg"] = "ES256";
    header["kid"] = "one";
    claims["iss"] = issuer;
    claims["aud"] = ClientId;
    claims["sub"] = "user-1";
    claims["iat"] = static_cast<Json::Int64>(Now);
    claims["exp"] = static_cast<Json::Int64>(Now + 600);
    tokens["access_token"] = "access-1";
    tokens["refresh_token"] = "refresh-1";
    tokens["token_type"] = "Bearer";
    tokens["expires_in"] = 300;
    userInfo["sub"] = "user-1";
    userInfo["email"] = "ann@example.com";
    NewAgent();
}

ProviderParts TestProvider::Parts()
{
    return {*this,
            signatures_,
            [] { return TimePoint(std::chrono::seconds(Now)); },
            [this] { return ticks; },
            [this](void* bytes, std::size_t size) {
                // Other bytes for each call.
                const std::string digest = signatures_.Digest(HashAlgorithm::Sha512, std::to_string(++random_));
                std::copy_n(digest.begin(), std::min(size, digest.size()), static_cast<char*>(bytes));
            },
            [this](std::chrono::milliseconds time) {
                pauses.push_back(time);
                ticks += time.count();
                return true;
            }};
}

Provider& TestProvider::NewAgent(Backoff backoff)
{
    agent_ = std::make_unique<Provider>(config, backoff, Parts());
    return *agent_;
}

Outcome<Grant> TestProvider::SignIn()
{
    constexpr std::int64_t limit = 600'000;
    const std::int64_t until = ticks + limit;
    const Outcome<BrowserSignIn> begun =
        Agent().BeginSignIn(ClientId, "openid profile", "http://127.0.0.1:4000/callback", until);
    if (const Failure* const failure = FailureOf(begun))
        return *failure;
    nonce_ = ResultOf(begun).secrets.nonce;
    return Agent().Redeem(ResultOf(begun), Secret("code-1"), until);
}

std::string TestProvider::IdToken() const
{
    Json::Value all = claims;
    if (!all.isMember("nonce") && !nonce_.empty())
        all["nonce"] = nonce_;
    for (const std::string& name : all.getMemberNames())
    {
        if (all[name].isNull())
            all.removeMember(name);
    }
    std::string token = SignedText(header, WriteJson(all), *key, *FindSigningAlgorithm(algorithm));
    if (changeIdToken)
        changeIdToken(token);
    return token;
}

HttpReply TestProvider::Send(const HttpRequest& request)
{
    const std::string path = ParseUrl(request.url)->path;
    requested.push_back(path);
    if (request.form)
    {
        Form form;
        const auto parameters = ParseForm(request.form->View());
        for (const auto& [name, value] : *parameters)
            form[name] = value;
        forms.push_back(std::move(form));
    }
    if (const auto found = hooks.find(path); found != hooks.end())
    {
        const Hook hook = found->second; // A copy: the hook may remove itself.
        if (std::optional<HttpReply> reply = hook(request))
            return *std::move(reply);
    }
    return Reply(request, path);
}

HttpReply TestProvider::Reply(const HttpRequest& request, const std::string& path)
{
    if (path == "/.well-known/openid-configuration")
        return JsonReply(metadata);
    if (path == "/keys")
        return JsonReply(keys);
    if (path == "/token")
    {
        Json::Value body = tokens;
        if (!body.isMember("id_token"))
            body["id_token"] = IdToken();
        if (body["id_token"].isNull())
            body.removeMember("id_token");
        return JsonReply(body);
    }
    if (path == "/userinfo")
        return request.bearer.IsEmpty() ? TextReply("", "", 401) : JsonReply(userInfo);
    if (path == "/revoke")
        return TextReply("", "");
    return TextReply("<html>", "text/html", 404);
}

} // namespace Kestrany::Agent::OpenId
