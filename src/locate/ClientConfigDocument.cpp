#include "locate/ClientConfigDocument.h"

namespace Kestrany::IdentityServices {
namespace {

/// Takes the values of one object, and notes each key that it looks for.
class KeyReader
{
public:
    explicit KeyReader(ClientConfigReading* reading) : reading_(reading) {}

    const Json::Value& Object(const Json::Value& parent, const char* key)
    {
        return Take(parent, key, &Json::Value::isObject);
    }

    std::string Text(const Json::Value& object, const char* key)
    {
        const Json::Value& value = Take(object, key, &Json::Value::isString);
        return value.isString() ? value.asString() : std::string();
    }

    bool Flag(const Json::Value& object, const char* key)
    {
        const Json::Value& value = Take(object, key, &Json::Value::isBool);
        return value.isBool() && value.asBool();
    }

private:
    const Json::Value& Take(const Json::Value& object, const char* key, bool (Json::Value::*rightType)() const)
    {
        const Json::Value& value = MemberOf(object, key);
        if (reading_)
            reading_->keys.push_back({key, !value.isNull(), (value.*rightType)()});
        return value;
    }

    ClientConfigReading* reading_;
};

} // namespace

std::optional<ClientConfigValues> ReadClientConfigDocument(const std::string& bytes, ClientConfigReading* reading)
{
    const std::optional<Json::Value> root = ParseJson(bytes, reading ? &reading->error : nullptr);
    if (!root)
        return std::nullopt;
    KeyReader keys(reading);
    const Json::Value& server = keys.Object(*root, "ssoServer");
    ClientConfigValues values;
    values.bundleId = keys.Text(server, "bundleId");
    values.versionCompatibilityConfigFilePath = keys.Text(server, "VersionCompatibilityConfigfilePath");
    values.searchPaths = keys.Text(server, "searchPaths");
    values.supportBothLocalAndAdmin = keys.Flag(server, "supportBothLocalAndAdmin");
    return values;
}

} // namespace Kestrany::IdentityServices
