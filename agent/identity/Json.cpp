#include "identity/Json.h"

#include <exception>
#include <memory>

#include <json/reader.h>
#include <json/writer.h>

namespace Kestrany::Agent {

std::string WriteJson(const Json::Value& value)
{
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "";
    writer["emitUTF8"] = true;
    return Json::writeString(writer, value);
}

std::optional<Json::Value> ReadJsonObject(const std::string& text)
{
    Json::CharReaderBuilder settings;
    Json::CharReaderBuilder::strictMode(&settings.settings_);
    try
    {
        const std::unique_ptr<Json::CharReader> reader(settings.newCharReader());
        Json::Value value;
        if (reader->parse(text.data(), text.data() + text.size(), &value, nullptr) && value.isObject())
            return value;
    }
    catch (const std::exception&)
    {
        // The parser throws if a document nests deeper than its limit.
    }
    return std::nullopt;
}

bool TakeText(const Json::Value& object, const char* key, std::string& text)
{
    const Json::Value& member = object[key];
    if (!member.isString())
        return false;
    std::string taken = member.asString();
    if (taken.find('\0') != std::string::npos)
        return false;
    text = std::move(taken);
    return true;
}

} // namespace Kestrany::Agent
