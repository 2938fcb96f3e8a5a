#ifndef AGENT_IDENTITY_OPENID_METADATA_H
#define AGENT_IDENTITY_OPENID_METADATA_H

#include <string>
#include <vector>

#include "identity/openid/Failure.h"
#include "identity/openid/Services.h"

namespace Kestrany::Agent::OpenId {

/// What a provider's discovery document says (OpenID Connect Discovery 1.0, RFC 8414). Endpoints that it does not offer
/// are empty; all others are https addresses, or those of this machine if that is allowed.
struct Metadata
{
    std::string issuer;
    std::string authorizationEndpoint;
    std::string tokenEndpoint;
    std::string keySet;
    std::string userInfoEndpoint;
    std::string revocationEndpoint;
    std::string endSessionEndpoint;
    std::string deviceEndpoint;
    std::string pushedRequestEndpoint;
    bool requiresPushedRequests = false;
    bool sendsIssuer = false;            ///< The redirect has the parameter "iss" (RFC 9207).
    std::vector<std::string> algorithms; ///< Of ID tokens; empty if it does not list them.
};

/// How a discovery document is checked.
struct MetadataExpectation
{
    std::string issuer;
    bool allowInsecureLoopback = false;
    bool assumePkce = false; ///< A document that lists no method at all is accepted.
};

/// The address of an issuer's discovery document.
std::string DiscoveryAddress(const std::string& issuer);

/// Parses the reply from that address.
Outcome<Metadata> ParseMetadata(const HttpReply& reply, const MetadataExpectation& expectation);

} // namespace Kestrany::Agent::OpenId

#endif
