#include "identity/openid/SignOut.h"

#include "identity/openid/ReplyJson.h"
#include "identity/openid/Url.h"

namespace Kestrany::Agent::OpenId {

Secret RevocationForm(const std::string& clientId, const Secret& token, std::string_view kind)
{
    Secret form;
    AppendParameter(form, "token", token.View());
    AppendParameter(form, "token_type_hint", kind);
    AppendParameter(form, "client_id", clientId);
    return form;
}

std::optional<Failure> RevocationFailure(const HttpReply& reply, const std::string& url)
{
    if (std::optional<Failure> failure = TransportFailure(reply, url))
        return failure;
    // RFC 7009: also for a token that the provider does not know. The body says nothing.
    if (reply.status == 200 || reply.status == 204)
        return std::nullopt;
    const bool isBroken = reply.status == 429 || reply.status >= 500;
    return Failure{isBroken ? IdProviderFailed : IdTokenEndpointError, "status 200 from " + Shown(url),
                   DescribeReply(reply)};
}

Secret EndSessionAddress(const std::string& endpoint, const EndSessionRequest& request)
{
    Secret form;
    if (request.idToken != nullptr && !request.idToken->IsEmpty())
        AppendParameter(form, "id_token_hint", request.idToken->View());
    AppendParameter(form, "client_id", request.clientId);
    if (!request.redirectUri.empty())
    {
        AppendParameter(form, "post_logout_redirect_uri", request.redirectUri);
        AppendParameter(form, "state", request.state);
    }
    return WithQuery(endpoint, form);
}

} // namespace Kestrany::Agent::OpenId
