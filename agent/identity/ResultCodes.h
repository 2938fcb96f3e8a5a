#ifndef AGENT_IDENTITY_RESULTCODES_H
#define AGENT_IDENTITY_RESULTCODES_H

#include "orlindex/IdErrorCode.h"

namespace Kestrany::Agent {

using IdentityServices::IdErrorCode;

// Results that the agent adds to those of the library. They reach the host unchanged.
inline constexpr auto IdNotLoggedIn = static_cast<IdErrorCode>(4001);        ///< Nobody is signed in.
inline constexpr auto IdLoginExpired = static_cast<IdErrorCode>(4002);       ///< The login has expired; log in again.
inline constexpr auto IdTokenExpired = static_cast<IdErrorCode>(4003);       ///< The token has expired; refresh it.
inline constexpr auto IdLogoutRefused = static_cast<IdErrorCode>(4004);      ///< An observer refused the logout.
inline constexpr auto IdAlreadyLoggedIn = static_cast<IdErrorCode>(4005);    ///< Another user is signed in.
inline constexpr auto IdCredentialsRefused = static_cast<IdErrorCode>(4006); ///< Unknown user or wrong secret.
inline constexpr auto IdNoProductConfig = static_cast<IdErrorCode>(4007);    ///< No product set for the server in use.
inline constexpr auto IdUnknownServer = static_cast<IdErrorCode>(4008);      ///< There is no such server.
inline constexpr auto IdUnknownProxy = static_cast<IdErrorCode>(4009);       ///< No settings stored for this proxy.
inline constexpr auto IdInvalidText = static_cast<IdErrorCode>(4010);        ///< Not well-formed UTF-8 or UTF-16.
inline constexpr auto IdInvalidAddress = static_cast<IdErrorCode>(4011);     ///< Not an http or https address.
inline constexpr auto IdInvalidOverride = static_cast<IdErrorCode>(4012);    ///< A value out of its range.
inline constexpr auto IdInvalidLoginMode = static_cast<IdErrorCode>(4013);   ///< A login mode that does not exist.
inline constexpr auto IdServerUnavailable = static_cast<IdErrorCode>(4014);  ///< No server process can be reached.
inline constexpr auto IdServerLost = static_cast<IdErrorCode>(4015);         ///< The server ended before its response.
inline constexpr auto IdServerTimedOut = static_cast<IdErrorCode>(4016);     ///< No response in time.
inline constexpr auto IdScenarioInvalid = static_cast<IdErrorCode>(4017); ///< The scenario file is wrong; see the log.
inline constexpr auto IdLoginRefused = static_cast<IdErrorCode>(4018);    ///< The scenario refuses logins.
inline constexpr auto IdLoginCancelled = static_cast<IdErrorCode>(4019);  ///< The login was cancelled.
inline constexpr auto IdLoginTimedOut = static_cast<IdErrorCode>(4020);   ///< The login waited until its limit.
inline constexpr auto IdNotStored = static_cast<IdErrorCode>(4021);       ///< The state cannot be written; no change.
inline constexpr auto IdTextTooLong = static_cast<IdErrorCode>(4022);     ///< A text fits no token or message.
inline constexpr auto IdFeatureNotOffered = static_cast<IdErrorCode>(4023); ///< The source does not offer it.
inline constexpr auto IdProtocolError = static_cast<IdErrorCode>(4024);     ///< Plugin and server differ in version.

} // namespace Kestrany::Agent

#endif
