#ifndef SIMULATOR_SESSION_RESULTCODES_H
#define SIMULATOR_SESSION_RESULTCODES_H

#include "orlindex/IdErrorCode.h"

namespace Kestrany::Simulator {

using IdentityServices::IdErrorCode;

// Results that the simulator adds to those that the library names. They reach the host unchanged.
inline constexpr auto IdNotLoggedIn = static_cast<IdErrorCode>(4001);        ///< Nobody is signed in.
inline constexpr auto IdLoginExpired = static_cast<IdErrorCode>(4002);       ///< The login has expired; log in again.
inline constexpr auto IdTokenExpired = static_cast<IdErrorCode>(4003);       ///< The token has expired; refresh it.
inline constexpr auto IdLogoutRefused = static_cast<IdErrorCode>(4004);      ///< An observer refused the logout.
inline constexpr auto IdAlreadyLoggedIn = static_cast<IdErrorCode>(4005);    ///< Somebody else is signed in.
inline constexpr auto IdCredentialsRefused = static_cast<IdErrorCode>(4006); ///< Unknown user or wrong secret.
inline constexpr auto IdNoProductConfig = static_cast<IdErrorCode>(4007);    ///< No product set for the server in use.
inline constexpr auto IdUnknownServer = static_cast<IdErrorCode>(4008);      ///< A server that the simulator lacks.
inline constexpr auto IdUnknownProxy = static_cast<IdErrorCode>(4009);       ///< No settings stored for this proxy.
inline constexpr auto IdInvalidText = static_cast<IdErrorCode>(4010);        ///< Not well-formed UTF-8 or UTF-16.
inline constexpr auto IdInvalidAddress = static_cast<IdErrorCode>(4011);     ///< Not an http or https address.
inline constexpr auto IdInvalidOverride = static_cast<IdErrorCode>(4012);    ///< A value out of its range.
inline constexpr auto IdInvalidLoginMode = static_cast<IdErrorCode>(4013);   ///< A login mode that does not exist.

} // namespace Kestrany::Simulator

#endif
