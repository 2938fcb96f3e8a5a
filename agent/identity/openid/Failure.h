#ifndef AGENT_IDENTITY_OPENID_FAILURE_H
#define AGENT_IDENTITY_OPENID_FAILURE_H

#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "identity/ResultCodes.h"

namespace Kestrany::Agent::OpenId {

// Results of signing in with a provider. They reach the host unchanged. A login that is cancelled, or that waits until
// its limit, has the same codes with every source: IdLoginCancelled and IdLoginTimedOut.
inline constexpr auto IdProviderConfigInvalid = static_cast<IdErrorCode>(4030);
inline constexpr auto IdProviderUnreachable = static_cast<IdErrorCode>(4031);
inline constexpr auto IdTlsRefused = static_cast<IdErrorCode>(4032);
inline constexpr auto IdDiscoveryMalformed = static_cast<IdErrorCode>(4033);
inline constexpr auto IdDiscoveryOfOtherIssuer = static_cast<IdErrorCode>(4034);
inline constexpr auto IdPkceNotOffered = static_cast<IdErrorCode>(4035);
inline constexpr auto IdNoRedirectPort = static_cast<IdErrorCode>(4036);
inline constexpr auto IdBrowserNotOpened = static_cast<IdErrorCode>(4037);
inline constexpr auto IdSignInDenied = static_cast<IdErrorCode>(4038);
inline constexpr auto IdSignInFailedAtProvider = static_cast<IdErrorCode>(4039);
inline constexpr auto IdStateWrong = static_cast<IdErrorCode>(4040);
inline constexpr auto IdRedirectOfOtherIssuer = static_cast<IdErrorCode>(4041);
inline constexpr auto IdRedirectMalformed = static_cast<IdErrorCode>(4042);
inline constexpr auto IdTokenEndpointError = static_cast<IdErrorCode>(4043);
inline constexpr auto IdTokenReplyMalformed = static_cast<IdErrorCode>(4044);
inline constexpr auto IdIdTokenRefused = static_cast<IdErrorCode>(4045);
inline constexpr auto IdSubjectDiffers = static_cast<IdErrorCode>(4046);
inline constexpr auto IdGrantRefused = static_cast<IdErrorCode>(4047);
inline constexpr auto IdReplyTooLarge = static_cast<IdErrorCode>(4048);
inline constexpr auto IdClockOff = static_cast<IdErrorCode>(4049);
inline constexpr auto IdProviderFailed = static_cast<IdErrorCode>(4050);
inline constexpr auto IdKeysMalformed = static_cast<IdErrorCode>(4051);
inline constexpr auto IdUserInfoMalformed = static_cast<IdErrorCode>(4052);
inline constexpr auto IdDeviceGrantNotOffered = static_cast<IdErrorCode>(4053);
inline constexpr auto IdDeviceReplyMalformed = static_cast<IdErrorCode>(4054);
inline constexpr auto IdDeviceCodeExpired = static_cast<IdErrorCode>(4055);
inline constexpr auto IdPushedRequestRefused = static_cast<IdErrorCode>(4056);
inline constexpr auto IdLoginModeNotOffered = static_cast<IdErrorCode>(4057);

/// Why something did not succeed. Its texts never hold a token, a code or another secret.
struct Failure
{
    IdErrorCode code = IdFailed;
    std::string expected; ///< Such as: status 200 from https://...
    std::string came;     ///< Such as: status 404
};

/// What each code means, in log lines.
struct FailureKind
{
    IdErrorCode code;
    const char* summary; ///< What happened, without a full stop.
    const char* remedy;  ///< What to do, as a sentence.
};

/// Every code of this source, in ascending order.
const std::vector<FailureKind>& FailureKinds();

/// The log line: summary and code, what was expected, what came, and what to do.
std::string LogLine(const Failure& failure);

/// A text from outside, in quotes, for a log line: printable ASCII, and cut off when it is long.
std::string Shown(std::string_view text);

/// The same, with every occurrence of a secret replaced: a provider may repeat what it was sent.
std::string ShownWithout(std::string_view text, const std::vector<std::string_view>& secrets);

/// A result, or why there is none.
template <class T>
using Outcome = std::variant<T, Failure>;

/// Null if there is a result.
template <class T>
const Failure* FailureOf(const Outcome<T>& outcome)
{
    return std::get_if<Failure>(&outcome);
}

/// The result, which must be there.
template <class T>
const T& ResultOf(const Outcome<T>& outcome)
{
    return std::get<T>(outcome);
}

template <class T>
T TakeResult(Outcome<T>&& outcome)
{
    return std::get<T>(std::move(outcome));
}

} // namespace Kestrany::Agent::OpenId

#endif
