#ifndef AGENT_IDENTITY_OPENID_REDIRECTREQUEST_H
#define AGENT_IDENTITY_OPENID_REDIRECTREQUEST_H

#include <string>
#include <string_view>

#include "identity/openid/Failure.h"
#include "identity/openid/Secret.h"

namespace Kestrany::Agent::OpenId {

/// What a redirect of the sign-in that waits looks like.
struct RedirectExpectation
{
    std::string path; ///< Of the redirect address.
    std::string_view state;
    std::string issuer;
    bool requiresIssuer = false; ///< The provider says that it sends "iss" (RFC 9207).
};

/// What a request to the loopback listener means for the sign-in that waits.
struct RedirectResult
{
    enum class Kind
    {
        OtherPath, ///< Not the redirect address, such as the browser's request for an icon. The sign-in goes on.
        Ignored, ///< Not of this sign-in, whose state it does not know; `failure` is for the log. The sign-in goes on.
        Failed,  ///< The sign-in ends with `failure`.
        Code     ///< The provider issued `code`.
    };
    Kind kind = Kind::OtherPath;
    Failure failure;
    Secret code;
};

/// Parses a request by its method and its target, such as "/callback?code=...&state=...".
RedirectResult ReadRedirect(std::string_view method, std::string_view target, const RedirectExpectation& expectation);

} // namespace Kestrany::Agent::OpenId

#endif
