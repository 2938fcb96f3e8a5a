#ifndef ORLINDEX_BASE_JSONNUMBERS_H
#define ORLINDEX_BASE_JSONNUMBERS_H

#include <json/value.h>
#include <optional>
#include <string>

namespace Kestrany::IdentityServices {

/// The JSON reader refuses a whole document for one number beyond a double's range, and takes seconds for a number of a
/// million digits. Answers a copy in which each such number is a short one that IsNumberOutOfRange knows, and all other
/// bytes stand where they stood; nothing for a text that may be read as it is.
std::optional<std::string> WithNumbersInRange(const std::string& bytes);

/// Whether the value is what a number beyond a double's range, or of more than a thousand characters, was read as.
bool IsNumberOutOfRange(const Json::Value& value);

} // namespace Kestrany::IdentityServices

#endif
