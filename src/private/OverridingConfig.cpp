#include "orlindex/OverridingConfig.h"

#include <json/value.h>

namespace Kestrany::IdentityServices {

BaseConfig::~BaseConfig() = default;

CallConfig::CallConfig() = default;
CallConfig::CallConfig(const CallConfig& other) = default;
CallConfig& CallConfig::operator=(const CallConfig& other) = default;
CallConfig::~CallConfig() = default;

void CallConfig::FromJson(const Json::Value& json)
{
    // A fixed text: each version of JsonCpp has its own text for this error.
    if (!json.isObject() && !json.isNull())
        throw Json::LogicError("in Json::Value::find(key, end, found): requires objectValue or nullValue");
    // By contract in this order, not the order of the fields: an error leaves the earlier ones assigned and the later
    // ones unchanged.
    failInterval = json["failInterval"].asInt();
    interval = json["interval"].asInt();
    maxJitter = json["maxJitter"].asInt();
    minJitter = json["minJitter"].asInt();
    url = json["url"].asString();
}

Json::Value CallConfig::ToJson() const
{
    Json::Value json(Json::objectValue);
    json["failInterval"] = failInterval;
    json["interval"] = interval;
    json["maxJitter"] = maxJitter;
    json["minJitter"] = minJitter;
    json["url"] = url;
    return json;
}

std::int32_t CallConfig::GetJsonVersion() const
{
    return 1;
}

BackoffConfig::BackoffConfig() = default;
BackoffConfig::BackoffConfig(const BackoffConfig& other) = default;
BackoffConfig& BackoffConfig::operator=(const BackoffConfig& other) = default;
BackoffConfig::~BackoffConfig() = default;

// BackoffConfig has no JSON form; it only implements the base class.
void BackoffConfig::FromJson(const Json::Value&) {}

Json::Value BackoffConfig::ToJson() const
{
    return {};
}

std::int32_t BackoffConfig::GetJsonVersion() const
{
    return 0;
}

} // namespace Kestrany::IdentityServices
