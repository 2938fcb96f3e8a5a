#ifndef AGENT_IDENTITY_OPENID_HTTPHEADERS_H
#define AGENT_IDENTITY_OPENID_HTTPHEADERS_H

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "identity/openid/Services.h"

namespace Kestrany::Agent::OpenId {

/// The time of a header field such as "Sun, 06 Nov 1994 08:49:37 GMT". nullopt for any other form.
std::optional<TimePoint> ParseHttpDate(std::string_view text);

/// How long a "Retry-After" field asks to wait: seconds, or a time. nullopt if it is neither. Not negative.
std::optional<std::chrono::seconds> ParseRetryAfter(std::string_view text, TimePoint now);

/// The media type of a "Content-Type" field, in lower case and without parameters.
std::string MediaType(std::string_view contentType);

} // namespace Kestrany::Agent::OpenId

#endif
