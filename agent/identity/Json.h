#ifndef AGENT_IDENTITY_JSON_H
#define AGENT_IDENTITY_JSON_H

#include <optional>
#include <string>

#include <json/value.h>

namespace Kestrany::Agent {

/// The value on one line of UTF-8.
std::string WriteJson(const Json::Value& value);

/// Nothing for a text that is not exactly one JSON object without repeated members.
std::optional<Json::Value> ReadJsonObject(const std::string& text);

/// Takes a text member over. False where it is missing, no text, or holds a zero, which no text of the contract can.
bool TakeText(const Json::Value& object, const char* key, std::string& text);

} // namespace Kestrany::Agent

#endif
