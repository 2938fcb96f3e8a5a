// The discovery document of an OpenID Connect provider.

#include <cstdint>
#include <string>

#include "OpenIdReplies.h"
#include "identity/openid/Metadata.h"
#include "identity/openid/Url.h"

using namespace Kestrany::Agent;
using namespace Kestrany::Agent::OpenId;
using OrlindexTest::Require;

namespace {

void RequireTrustworthy(const std::string& address, bool isRequired)
{
    if (address.empty() && !isRequired)
        return;
    const auto url = ParseUrl(address);
    Require(url && url->isHttps, "an endpoint is an https address");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const MetadataExpectation expectation{"https://a.example", false, false};
    const auto outcome = ParseMetadata(OrlindexTest::ReplyOf(std::string(data, data + size)), expectation);
    if (const Failure* const failure = FailureOf(outcome))
    {
        OrlindexTest::RequireGoodLine(*failure);
        return 0;
    }
    const Metadata& metadata = ResultOf(outcome);
    Require(metadata.issuer == expectation.issuer, "the issuer is the expected one");
    RequireTrustworthy(metadata.authorizationEndpoint, true);
    RequireTrustworthy(metadata.tokenEndpoint, true);
    RequireTrustworthy(metadata.keySet, true);
    for (const std::string* const address : {&metadata.userInfoEndpoint, &metadata.revocationEndpoint,
                                             &metadata.endSessionEndpoint, &metadata.deviceEndpoint})
        RequireTrustworthy(*address, false);
    RequireTrustworthy(metadata.pushedRequestEndpoint, metadata.requiresPushedRequests);
    return 0;
}
