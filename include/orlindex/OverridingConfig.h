#ifndef ORLINDEX_OVERRIDINGCONFIG_H
#define ORLINDEX_OVERRIDINGCONFIG_H

#include <cstdint>
#include <string>

#include "Export.h"

namespace Json {
class Value;
}

namespace Kestrany::IdentityServices {

/// What an automation host overrides in the client plugin module, see IdServicesAutomation::SetOverridingConfig.
///
/// The JSON operations exchange JsonCpp values: a host that uses them is built with the JsonCpp version that the
/// library was built with.
class ORLINDEX_API BaseConfig
{
public:
    virtual ~BaseConfig();
    /// Fills the fields from a JSON value.
    virtual void FromJson(const Json::Value& json) = 0;
    /// A new JSON value of the fields.
    virtual Json::Value ToJson() const = 0;
    /// Version of the JSON form.
    virtual std::int32_t GetJsonVersion() const = 0;

protected:
    BaseConfig() = default;
    BaseConfig(const BaseConfig&) = default;            ///< Classes below copy their fields.
    BaseConfig& operator=(const BaseConfig&) = default; ///< Classes below copy their fields.
};

/// How the client plugin module calls its identity service. The plugin gives the numbers their meaning, unit and range;
/// the library passes them on unchanged.
struct ORLINDEX_API CallConfig : public BaseConfig
{
    std::int32_t interval = 0;     ///< Between two calls.
    std::int32_t failInterval = 0; ///< Between two calls after one failed.
    std::int32_t minJitter = 0;    ///< Least random addition to an interval.
    std::int32_t maxJitter = 0;    ///< Greatest random addition to an interval.
    std::string url;               ///< Address that is called. UTF-8.

    CallConfig();                                   ///< All numbers 0, the address empty.
    CallConfig(const CallConfig& other);            ///< Copies every field.
    CallConfig& operator=(const CallConfig& other); ///< Copies every field.
    ~CallConfig() override;

    /// Reads the members "failInterval", "interval", "maxJitter", "minJitter" and "url", in this order. Every field is
    /// overwritten; a missing member gives 0 or an empty text. Raises what JsonCpp raises for a value that is neither
    /// an object nor null (Json::LogicError), or for a member that cannot be converted; fields read before keep their
    /// values.
    void FromJson(const Json::Value& json) override;
    /// An object of the five members.
    Json::Value ToJson() const override;
    /// 1.
    std::int32_t GetJsonVersion() const override;
};

/// How the client plugin module backs off after failures. The plugin gives the numbers their meaning, unit and range;
/// the library passes them on unchanged.
struct ORLINDEX_API BackoffConfig : public BaseConfig
{
    std::int32_t initialInterval = 0; ///< Before the first retry.
    std::int32_t maxInterval = 0;     ///< Greatest interval between two retries.
    std::int32_t multiplier = 0;      ///< By which the interval grows with each retry.
    std::int32_t maxRetries = 0;      ///< How many retries are made.
    std::int32_t jitter = 0;          ///< Random addition to an interval.

    BackoffConfig();                                      ///< All numbers 0.
    BackoffConfig(const BackoffConfig& other);            ///< Copies every field.
    BackoffConfig& operator=(const BackoffConfig& other); ///< Copies every field.
    ~BackoffConfig() override;

    /// Has no JSON form: changes nothing.
    void FromJson(const Json::Value& json) override;
    /// Has no JSON form: null.
    Json::Value ToJson() const override;
    /// 0: there is no JSON form.
    std::int32_t GetJsonVersion() const override;
};

} // namespace Kestrany::IdentityServices

#endif
