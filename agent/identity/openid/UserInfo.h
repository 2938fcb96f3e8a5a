#ifndef AGENT_IDENTITY_OPENID_USERINFO_H
#define AGENT_IDENTITY_OPENID_USERINFO_H

#include <string>

#include <json/value.h>

#include "identity/LoginService.h"
#include "identity/openid/Failure.h"
#include "identity/openid/Services.h"

namespace Kestrany::Agent::OpenId {

/// Parses a reply of the userinfo endpoint. Its subject must be the one of the ID token: otherwise the claims could be
/// another user's.
Outcome<Json::Value> ParseUserInfo(const HttpReply& reply, const std::string& url, const std::string& subject);

/// The claims about the user: those of the ID token, completed by those of the userinfo endpoint, without the claims
/// that are about the token. Claims beyond the limits of a profile, and those with a number that no program can
/// represent, are left out.
Json::Value UserClaims(const Json::Value& idToken, const Json::Value& userInfo);

/// The user as hosts see him: the standard claims as attributes, and all of them as the profile.
Account AccountOf(const Json::Value& claims);

} // namespace Kestrany::Agent::OpenId

#endif
