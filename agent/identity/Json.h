#ifndef AGENT_IDENTITY_JSON_H
#define AGENT_IDENTITY_JSON_H

#include <optional>
#include <string>

#include <json/value.h>

namespace Kestrany::Agent {

/// Writes the value on one line of UTF-8.
std::string WriteJson(const Json::Value& value);

/// nullopt if the text is anything but one JSON object without repeated members.
std::optional<Json::Value> ReadJsonObject(const std::string& text);

/// Whether the value holds a number that JSON allows, but no program can represent.
bool HasNumberOutOfRange(const Json::Value& value);

/// Reads a text member. False if it is missing, no text, or holds a zero, which no text of the contract can.
bool TakeText(const Json::Value& object, const char* key, std::string& text);

} // namespace Kestrany::Agent

#endif
