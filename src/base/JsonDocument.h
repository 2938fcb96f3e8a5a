#ifndef ORLINDEX_BASE_JSONDOCUMENT_H
#define ORLINDEX_BASE_JSONDOCUMENT_H

#include <json/value.h>
#include <optional>
#include <string>
#include <string_view>

namespace Kestrany::IdentityServices {

/// What the reader says of a text that is no JSON.
struct JsonError
{
    int line = 0; ///< From 1; 0 where the reader does not say.
    int column = 0;
    std::string text;
};

/// Nothing for a text that is no JSON or nests too deep. A UTF-8 byte order mark and comments are accepted: people edit
/// these files by hand. A number too large costs its place alone: see IsNumberOutOfRange. Fills the error, where asked
/// to.
std::optional<Json::Value> ParseJson(const std::string& bytes, JsonError* error = nullptr);

/// The member `key` of `value`; null where there is none, or where `value` is no object.
const Json::Value& MemberOf(const Json::Value& value, std::string_view key);

} // namespace Kestrany::IdentityServices

#endif
