#ifndef AGENT_IDENTITY_OPENID_LIMITS_H
#define AGENT_IDENTITY_OPENID_LIMITS_H

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace Kestrany::Agent::OpenId::Limits {

// What a provider may choose, and how far. Sizes in bytes.

inline constexpr std::size_t Metadata = 256 * 1024;      ///< A discovery document.
inline constexpr std::size_t KeySet = 256 * 1024;        ///< A JSON Web Key Set.
inline constexpr std::size_t TokenReply = 512 * 1024;    ///< A reply with tokens, or another reply to a form.
inline constexpr std::size_t UserInfo = 256 * 1024;      ///< A reply of the userinfo endpoint.
inline constexpr std::size_t Token = 64 * 1024;          ///< Each token, and each code.
inline constexpr std::size_t TokenHeader = 8 * 1024;     ///< The header of a signed token, as base64url text.
inline constexpr std::size_t RedirectTarget = 16 * 1024; ///< The request target that the browser sends.
inline constexpr std::size_t Address = 2048;             ///< Each address, such as an endpoint.
inline constexpr std::size_t Subject = 255;              ///< "sub", as OpenID Connect Core says.
inline constexpr std::size_t KeyId = 1024;               ///< "kid".
inline constexpr std::size_t UserCode = 64;              ///< What the user types on another device.
inline constexpr std::size_t ShownText = 200;            ///< A provider's text in a log line.
inline constexpr std::size_t ProfileBytes = 64 * 1024;   ///< The profile: it has to fit one message to a host.

inline constexpr int JsonDepth = 32;               ///< Objects and arrays within each other.
inline constexpr std::size_t JsonValues = 10'000;  ///< Values of one document.
inline constexpr std::size_t ProfileMembers = 256; ///< Claims of one user.
inline constexpr std::size_t Keys = 100;           ///< Keys of a set; further ones are passed over.
inline constexpr std::size_t KeysTried = 16;       ///< Keys that one signature is tried with.
inline constexpr std::size_t Audiences = 32;       ///< "aud" of one token.
inline constexpr std::size_t Parameters = 64;      ///< Parameters of one redirect request.

inline constexpr std::size_t SmallestModulus = 256; ///< Of RSA keys: 2048 bits.
inline constexpr std::size_t LargestModulus = 1024; ///< 8192 bits: a larger one takes seconds.
inline constexpr std::size_t LargestExponent = 8;   ///< Of RSA keys.

inline constexpr std::chrono::seconds RetryAfter{300};                ///< A longer wait is not begun.
inline constexpr std::chrono::seconds PollInterval{120};              ///< Between two polls of a device grant.
inline constexpr std::chrono::seconds TokenLifetime{366 * 24 * 3600}; ///< A longer one counts as this one.

/// Far beyond any token. The clock counts fractions of seconds: a larger number could overflow it.
inline constexpr std::int64_t LastSecond = 4'102'444'800; // 2100-01-01

} // namespace Kestrany::Agent::OpenId::Limits

#endif
