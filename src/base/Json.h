#ifndef ORLINDEX_BASE_JSON_H
#define ORLINDEX_BASE_JSON_H

#include <json/value.h>
#include <optional>
#include <string>
#include <string_view>

namespace Kestrany::IdentityServices {

/// Why a text is not JSON, and the position of the error.
struct JsonError
{
    int line = 0; ///< Counted from 1; 0 if the parser gives no position.
    int column = 0;
    std::string text;
};

/// The result of parsing a text.
struct ParsedJson
{
    std::optional<Json::Value> root; ///< nullopt if the text is not JSON or nests too deep.
    JsonError error;                 ///< Valid only if there is no root.
};

enum class JsonSyntax
{
    /// For files that people edit: accepts a UTF-8 byte order mark and comments. A number out of range does not make
    /// the file invalid: see IsNumberOutOfRange.
    Configuration,
    /// For messages between programs: an object or an array, no extensions of the standard, no duplicate members.
    Strict
};

ParsedJson ParseJson(const std::string& bytes, JsonSyntax syntax = JsonSyntax::Configuration);

/// The member `key` of `value`; null if there is none, or if `value` is not an object.
const Json::Value& MemberOf(const Json::Value& value, std::string_view key);

} // namespace Kestrany::IdentityServices

#endif
