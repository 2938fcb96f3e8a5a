#ifndef ORLINDEX_BASE_JSONNUMBERS_H
#define ORLINDEX_BASE_JSONNUMBERS_H

#include <json/value.h>
#include <optional>
#include <string>

namespace Kestrany::IdentityServices {

// A workaround for two defects of JsonCpp. Until 1.9.5, which Debian 12 has, the parser rejects the whole text if one
// number is beyond a double's range; 1.9.6 makes it infinite. And every version takes time by the square of a number's
// length: seconds for a million digits. This file can go when the oldest supported JsonCpp has neither defect.

/// Returns a copy in which each such number is replaced by a short one that IsNumberOutOfRange recognizes; all other
/// bytes keep their positions. nullopt if the text needs no replacement.
std::optional<std::string> WithNumbersInRange(const std::string& bytes);

/// Whether the value replaces a number that is beyond a double's range, or longer than a thousand characters.
bool IsNumberOutOfRange(const Json::Value& value);

} // namespace Kestrany::IdentityServices

#endif
