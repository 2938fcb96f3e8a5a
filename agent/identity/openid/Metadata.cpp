#include "identity/openid/Metadata.h"

#include <algorithm>

#include "identity/openid/HttpHeaders.h"
#include "identity/openid/Limits.h"
#include "identity/openid/ReplyJson.h"
#include "identity/openid/Url.h"

namespace Kestrany::Agent::OpenId {

namespace {

struct Endpoint
{
    const char* name;
    std::string Metadata::* address;
    bool isRequired;
};

constexpr Endpoint Endpoints[] = {
    {"authorization_endpoint", &Metadata::authorizationEndpoint, true},
    {"token_endpoint", &Metadata::tokenEndpoint, true},
    {"jwks_uri", &Metadata::keySet, true},
    {"userinfo_endpoint", &Metadata::userInfoEndpoint, false},
    {"revocation_endpoint", &Metadata::revocationEndpoint, false},
    {"end_session_endpoint", &Metadata::endSessionEndpoint, false},
    {"device_authorization_endpoint", &Metadata::deviceEndpoint, false},
    {"pushed_authorization_request_endpoint", &Metadata::pushedRequestEndpoint, false},
};

Failure Malformed(std::string expected, std::string came)
{
    return {IdDiscoveryMalformed, std::move(expected), std::move(came)};
}

bool Holds(const std::vector<std::string>& texts, const char* text)
{
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

std::optional<Failure> ReadEndpoint(const Json::Value& root, const Endpoint& endpoint,
                                    const MetadataExpectation& expectation, Metadata& metadata)
{
    const Json::Value& member = Member(root, endpoint.name);
    if (member.isNull() && !endpoint.isRequired)
        return std::nullopt;
    const std::string expected = "\"" + std::string(endpoint.name) + "\" with an https address";
    if (!member.isString())
        return Malformed(expected, member.isNull() ? "none" : "another value");
    const std::string address = member.asString();
    const std::optional<Url> url = ParseUrl(address);
    if (!url || !IsTrustworthy(*url, AllowsInsecureEndpoints(expectation.issuer, expectation.allowInsecureLoopback)))
        return Malformed(expected, Shown(address));
    metadata.*endpoint.address = address;
    return std::nullopt;
}

/// RFC 8414: "If omitted, the authorization server does not support PKCE."
std::optional<Failure> CheckPkce(const Json::Value& root, const MetadataExpectation& expectation)
{
    constexpr char name[] = "code_challenge_methods_supported";
    const std::optional<std::vector<std::string>> methods = TextsMember(root, name);
    if (methods ? Holds(*methods, "S256") : Member(root, name).isNull() && expectation.assumePkce)
        return std::nullopt;
    return Failure{IdPkceNotOffered, "\"S256\" in \"" + std::string(name) + "\"",
                   methods ? "other methods" : "no list of methods"};
}

std::optional<Failure> CheckReply(const HttpReply& reply, const std::string& address)
{
    if (std::optional<Failure> failure = TransportFailure(reply, address))
        return failure;
    const std::string expected = "status 200 with JSON from " + Shown(address);
    if (reply.status == 429 || reply.status >= 500)
        return Failure{IdProviderFailed, expected, DescribeReply(reply)};
    if (reply.status != 200 || MediaType(reply.contentType) != "application/json")
        return Malformed(expected, DescribeReply(reply));
    return std::nullopt;
}

} // namespace

std::string DiscoveryAddress(const std::string& issuer)
{
    const bool endsWithSlash = !issuer.empty() && issuer.back() == '/';
    return issuer.substr(0, issuer.size() - (endsWithSlash ? 1 : 0)) + "/.well-known/openid-configuration";
}

Outcome<Metadata> ParseMetadata(const HttpReply& reply, const MetadataExpectation& expectation)
{
    if (std::optional<Failure> failure = CheckReply(reply, DiscoveryAddress(expectation.issuer)))
        return *std::move(failure);
    std::string problem;
    const std::optional<Json::Value> root = ParseObject(reply.body.View(), problem);
    if (!root)
        return Malformed("a discovery document", problem);
    const Json::Value& issuer = Member(*root, "issuer");
    // Exactly, without any normalization: otherwise one issuer could pass for another.
    if (issuer != expectation.issuer)
        return Failure{IdDiscoveryOfOtherIssuer, "the issuer " + Shown(expectation.issuer),
                       issuer.isString() ? Shown(issuer.asString()) : std::string("none")};
    Metadata metadata;
    metadata.issuer = expectation.issuer;
    for (const Endpoint& endpoint : Endpoints)
    {
        if (std::optional<Failure> failure = ReadEndpoint(*root, endpoint, expectation, metadata))
            return *std::move(failure);
    }
    const auto responseTypes = TextsMember(*root, "response_types_supported");
    if (responseTypes && !Holds(*responseTypes, "code"))
        return Malformed("\"code\" in \"response_types_supported\"", "other response types");
    if (std::optional<Failure> failure = CheckPkce(*root, expectation))
        return *std::move(failure);
    metadata.requiresPushedRequests = Member(*root, "require_pushed_authorization_requests") == true;
    metadata.sendsIssuer = Member(*root, "authorization_response_iss_parameter_supported") == true;
    metadata.algorithms =
        TextsMember(*root, "id_token_signing_alg_values_supported").value_or(std::vector<std::string>());
    if (metadata.requiresPushedRequests && metadata.pushedRequestEndpoint.empty())
        return Malformed("\"pushed_authorization_request_endpoint\", because such requests are required", "none");
    return metadata;
}

} // namespace Kestrany::Agent::OpenId
