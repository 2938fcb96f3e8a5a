#include "plugin/ProductSettings.h"

#include <algorithm>
#include <iterator>

#include "identity/Json.h"
#include "identity/LoginService.h"

namespace Kestrany::Agent {

namespace {

constexpr char ServerKey[] = "server";

struct TextMember
{
    const char* key;
    std::string ProductSettings::* text;
};

constexpr TextMember TextMembers[] = {
    {"clientId", &ProductSettings::clientId},    {"tokenScope", &ProductSettings::tokenScope},
    {"productLine", &ProductSettings::lineName}, {"releaseId", &ProductSettings::releaseId},
    {"buildId", &ProductSettings::buildId},
};

bool TakeMember(const Json::Value& object, const std::string& key, ServerProduct& product)
{
    if (key == ServerKey)
    {
        std::string name;
        if (TakeText(object, ServerKey, name))
            product.server = ServerOfName(name);
        return product.server != TALIX_SERVER_UNAVAILABLE;
    }
    const auto* member = std::find_if(std::begin(TextMembers), std::end(TextMembers),
                                      [&](const TextMember& candidate) { return candidate.key == key; });
    return member != std::end(TextMembers) && TakeText(object, member->key, product.product.*member->text);
}

} // namespace

std::string ProductToJson(const ServerProduct& product)
{
    const std::string server = ServerName(product.server);
    if (server.empty())
        return {};
    Json::Value object(Json::objectValue);
    object[ServerKey] = server;
    for (const TextMember& member : TextMembers)
    {
        if (const std::string& text = product.product.*member.text; !text.empty())
            object[member.key] = text;
    }
    return WriteJson(object);
}

std::optional<ServerProduct> ProductFromJson(const std::string& json)
{
    const std::optional<Json::Value> object = ReadJsonObject(json);
    if (!object)
        return std::nullopt;
    ServerProduct product;
    for (const std::string& key : object->getMemberNames())
    {
        if (!TakeMember(*object, key, product))
            return std::nullopt;
    }
    if (product.server == TALIX_SERVER_UNAVAILABLE)
        return std::nullopt;
    return product;
}

} // namespace Kestrany::Agent
