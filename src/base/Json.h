#ifndef ORLINDEX_BASE_JSON_H
#define ORLINDEX_BASE_JSON_H

#include <json/value.h>
#include <optional>
#include <string>
#include <string_view>

namespace Kestrany::IdentityServices {

/// Why a text is not JSON, and where.
struct JsonError
{
    int line = 0; ///< From 1; 0 if the parser does not say.
    int column = 0;
    std::string text;
};

/// What parsing a text came to.
struct JsonDocument
{
    std::optional<Json::Value> root; ///< nullopt for a text that is not JSON or nests too deep.
    JsonError error;                 ///< Meaningful if there is no root.
};

enum class JsonSyntax
{
    /// For files that people edit: a UTF-8 byte order mark and comments are accepted. A number out of range costs its
    /// place alone: see IsNumberOutOfRange.
    Configuration,
    /// For messages between programs: an object or an array, nothing beside the standard, no member twice.
    Strict
};

JsonDocument ParseJson(const std::string& bytes, JsonSyntax syntax = JsonSyntax::Configuration);

/// The member `key` of `value`; null if there is none, or if `value` is not an object.
const Json::Value& MemberOf(const Json::Value& value, std::string_view key);

} // namespace Kestrany::IdentityServices

#endif
