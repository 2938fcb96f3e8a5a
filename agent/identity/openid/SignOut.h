#ifndef AGENT_IDENTITY_OPENID_SIGNOUT_H
#define AGENT_IDENTITY_OPENID_SIGNOUT_H

#include <optional>
#include <string>
#include <string_view>

#include "identity/openid/Failure.h"
#include "identity/openid/Secret.h"
#include "identity/openid/Services.h"

namespace Kestrany::Agent::OpenId {

/// The form that revokes a token (RFC 7009). `kind`: "refresh_token" or "access_token".
Secret RevocationForm(const std::string& clientId, const Secret& token, std::string_view kind);

/// Why the token is still valid at the provider; nullopt if it was revoked. The local login is gone in either case.
std::optional<Failure> RevocationFailure(const HttpReply& reply, const std::string& url);

/// What the provider's logout page is told (RP-Initiated Logout 1.0).
struct EndSessionRequest
{
    std::string clientId;
    const Secret* idToken = nullptr; ///< Says whose session ends; null if there is none.
    std::string redirectUri;         ///< Where the browser goes then; empty to stay.
    std::string_view state;          ///< Comes back with that redirect.
};

/// The address for the browser. It holds the ID token: it must not get into a log or a command line.
Secret EndSessionAddress(const std::string& endpoint, const EndSessionRequest& request);

} // namespace Kestrany::Agent::OpenId

#endif
