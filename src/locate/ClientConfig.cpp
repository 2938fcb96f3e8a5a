#include "locate/ClientConfig.h"

#include <algorithm>
#include <boost/algorithm/string/split.hpp>
#include <utility>

namespace Kestrany::IdentityServices {
namespace {

/// Takes the values of one object, and notes each key that it looks for.
class KeyReader
{
public:
    explicit KeyReader(std::vector<ClientConfigKey>& keys) : keys_(keys) {}

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
        keys_.push_back({key, !value.isNull(), (value.*rightType)()});
        return value;
    }

    std::vector<ClientConfigKey>& keys_;
};

} // namespace

ParsedClientConfig ParseClientConfig(const std::string& bytes)
{
    ParsedClientConfig config;
    const JsonDocument document = ParseJson(bytes);
    config.error = document.error;
    if (!document.root)
        return config;
    KeyReader keys(config.keys);
    const Json::Value& server = keys.Object(*document.root, "ssoServer");
    ClientConfigValues values;
    values.bundleId = keys.Text(server, "bundleId");
    values.versionCompatibilityConfigFilePath = keys.Text(server, "VersionCompatibilityConfigfilePath");
    values.searchPaths = keys.Text(server, "searchPaths");
    values.supportBothLocalAndAdmin = keys.Flag(server, "supportBothLocalAndAdmin");
    config.values = std::move(values);
    return config;
}

std::vector<std::wstring> SplitSearchPaths(const std::wstring& text)
{
    std::vector<std::wstring> entries;
    boost::algorithm::split(
        entries, text, [](wchar_t character) { return character == L';'; }, boost::algorithm::token_compress_on);
    // Runs of separators were one; a separator at an end leaves an empty entry.
    entries.erase(std::remove(entries.begin(), entries.end(), std::wstring()), entries.end());
    return entries;
}

FixedSettings::FixedSettings(ServerSettings& settings) : settings_(settings)
{
    fixed_.searchName = L"Pellwick.exe";
    fixed_.executableName = L"Pellwick.exe";
    fixed_.defaultProcessName = "Kestrany.TALIX.DefaultProcess-v2";
    fixed_.defaultServerName = "Kestrany.TALIX.DefaultServer-v2";
}

FixedSettings::~FixedSettings()
{
    settings_.searchName.swap(fixed_.searchName);
    settings_.executableName.swap(fixed_.executableName);
    settings_.defaultProcessName.swap(fixed_.defaultProcessName);
    settings_.defaultServerName.swap(fixed_.defaultServerName);
}

} // namespace Kestrany::IdentityServices
