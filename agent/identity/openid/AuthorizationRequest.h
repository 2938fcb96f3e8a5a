#ifndef AGENT_IDENTITY_OPENID_AUTHORIZATIONREQUEST_H
#define AGENT_IDENTITY_OPENID_AUTHORIZATIONREQUEST_H

#include <map>
#include <string>

#include "identity/openid/Failure.h"
#include "identity/openid/Metadata.h"
#include "identity/openid/Secret.h"
#include "identity/openid/Services.h"

namespace Kestrany::Agent::OpenId {

/// The challenge of a PKCE verifier: S256 (RFC 7636).
std::string CodeChallenge(const Secret& verifier, Signatures& signatures);

/// The scope with "openid", which makes the provider issue an ID token.
std::string WithOpenIdScope(const std::string& scope);

/// What a sign-in remembers between its request and the redirect.
struct SignInSecrets
{
    Secret state;
    Secret verifier;
    std::string nonce;
};

/// New values for one sign-in, 256 random bits each.
SignInSecrets MakeSignInSecrets(const RandomSource& random);

/// What the provider is asked for.
struct AuthorizationRequest
{
    std::string clientId;
    std::string scope;
    std::string redirectUri;
    std::map<std::string, std::string> additionalParameters;
};

/// The request's parameters, form-encoded: for the authorization endpoint, or for a pushed request.
Secret AuthorizationParameters(const AuthorizationRequest& request, const SignInSecrets& secrets,
                               Signatures& signatures);

/// The reply to a pushed request (RFC 9126): the "request_uri" that stands for it.
Outcome<std::string> ParsePushedReply(const HttpReply& reply, const std::string& url);

/// The address for the browser: with all parameters, or with the "request_uri" of a pushed request.
Secret AuthorizationAddress(const std::string& endpoint, const Secret& parameters);
Secret PushedAuthorizationAddress(const std::string& endpoint, const std::string& clientId,
                                  const std::string& requestUri);

/// The redirect address of a listener, as it was registered at the provider.
std::string RedirectUri(const std::string& host, unsigned int port, const std::string& path);

} // namespace Kestrany::Agent::OpenId

#endif
