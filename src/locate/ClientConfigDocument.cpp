#include "locate/ClientConfigDocument.h"

#include "base/JsonDocument.h"

namespace Kestrany::IdentityServices {
namespace {

std::string TextAt(const Json::Value& object, const std::string& key)
{
    const Json::Value& value = MemberOf(object, key);
    return value.isString() ? value.asString() : std::string();
}

bool FlagAt(const Json::Value& object, const std::string& key)
{
    const Json::Value& value = MemberOf(object, key);
    return value.isBool() && value.asBool();
}

} // namespace

std::optional<ClientConfigValues> ReadClientConfigDocument(const std::string& bytes)
{
    const std::optional<Json::Value> root = ParseJson(bytes);
    if (!root)
        return std::nullopt;
    const Json::Value& server = MemberOf(*root, "ssoServer");
    ClientConfigValues values;
    values.bundleId = TextAt(server, "bundleId");
    values.versionCompatibilityConfigFilePath = TextAt(server, "VersionCompatibilityConfigfilePath");
    values.searchPaths = TextAt(server, "searchPaths");
    values.supportBothLocalAndAdmin = FlagAt(server, "supportBothLocalAndAdmin");
    return values;
}

} // namespace Kestrany::IdentityServices
