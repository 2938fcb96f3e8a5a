// The names and meanings of result codes and events, for the user.
#ifndef DESKTOP_HOST_CODES_H
#define DESKTOP_HOST_CODES_H

#include <cstdint>
#include <string>

#include "orlindex/talix.h"

namespace DesktopHost {

/// The number and, for a code of the library, its name: "3005 (IdClientUnavailable)".
std::wstring CodeText(std::int32_t code);

/// What the code means, as a sentence.
std::wstring Meaning(std::int32_t code);

std::wstring EventName(std::int32_t eventCode);

/// The user or the host ended the login: not a failure.
bool IsCancelled(talix_status_code code);

} // namespace DesktopHost

#endif
