#include "base/JsonDocument.h"

#include <exception>
#include <json/reader.h>
#include <memory>

namespace Kestrany::IdentityServices {

std::optional<Json::Value> ParseJson(const std::string& bytes)
{
    Json::CharReaderBuilder settings;
    settings["collectComments"] = false;
    settings["skipBom"] = true;
    try
    {
        const std::unique_ptr<Json::CharReader> reader(settings.newCharReader());
        Json::Value root;
        if (reader->parse(bytes.data(), bytes.data() + bytes.size(), &root, nullptr))
            return root;
    }
    catch (const std::exception&)
    {
        // The reader throws where a document nests deeper than its limit, or is too large for the memory left.
    }
    return std::nullopt;
}

const Json::Value& MemberOf(const Json::Value& value, const std::string& key)
{
    const Json::Value* member = value.isObject() ? value.find(key.data(), key.data() + key.size()) : nullptr;
    return member ? *member : Json::Value::nullSingleton();
}

} // namespace Kestrany::IdentityServices
