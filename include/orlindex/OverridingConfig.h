#ifndef ORLINDEX_OVERRIDINGCONFIG_H
#define ORLINDEX_OVERRIDINGCONFIG_H

#include <cstdint>
#include <string>

#include "Export.h"

namespace Json {
class Value;
}

namespace Kestrany::IdentityServices {

/// Settings of the client plugin module that an automation host overrides, see
/// IdServicesAutomation::SetOverridingConfig.
///
/// The JSON operations exchange JsonCpp values: a host that uses them must be built with the JsonCpp version that the
/// library was built with.
class ORLINDEX_API BaseConfig
{
public:
    virtual ~BaseConfig();
    /// Fills the fields from a JSON value.
    virtual void FromJson(const Json::Value& json) = 0;
    /// Returns the fields as a new JSON value.
    virtual Json::Value ToJson() const = 0;
    /// Version of the JSON form.
    virtual std::int32_t GetJsonVersion() const = 0;

protected:
    BaseConfig() = default;
    BaseConfig(const BaseConfig&) = default;            ///< Derived classes copy their fields.
    BaseConfig& operator=(const BaseConfig&) = default; ///< Derived classes copy their fields.
};

/// How the client plugin module calls its identity service. The plugin defines the meaning, unit and range of the
/// numbers; the library passes them on unchanged.
struct ORLINDEX_API CallConfig : public BaseConfig
{
    std::int32_t interval = 0;     ///< Between two calls.
    std::int32_t failInterval = 0; ///< Between two calls after one failed.
    std::int32_t minJitter = 0;    ///< Minimum random addition to an interval.
    std::int32_t maxJitter = 0;    ///< Maximum random addition to an interval.
    std::string url;               ///< URL that is called. UTF-8.

    CallConfig();                                   ///< All numbers 0, the URL empty.
    CallConfig(const CallConfig& other);            ///< Copies every field.
    CallConfig& operator=(const CallConfig& other); ///< Copies every field.
    ~CallConfig() override;

    /// Reads the members "failInterval", "interval", "maxJitter", "minJitter" and "url", in this order. Every field is
    /// overwritten; a missing member gives 0 or an empty text. Throws the JsonCpp exception for a value that is neither
    /// an object nor null (Json::LogicError), or for a member that cannot be converted; the fields read before it keep
    /// their new values.
    void FromJson(const Json::Value& json) override;
    /// Returns an object with the five members.
    Json::Value ToJson() const override;
    /// Returns 1.
    std::int32_t GetJsonVersion() const override;
};

/// How the client plugin module backs off after failures. The plugin defines the meaning, unit and range of the
/// numbers; the library passes them on unchanged.
struct ORLINDEX_API BackoffConfig : public BaseConfig
{
    std::int32_t initialInterval = 0; ///< Before the first retry.
    std::int32_t maxInterval = 0;     ///< Maximum interval between two retries.
    std::int32_t multiplier = 0;      ///< Factor by which the interval grows with each retry.
    std::int32_t maxRetries = 0;      ///< Number of retries.
    std::int32_t jitter = 0;          ///< Random addition to an interval.

    BackoffConfig();                                      ///< All numbers 0.
    BackoffConfig(const BackoffConfig& other);            ///< Copies every field.
    BackoffConfig& operator=(const BackoffConfig& other); ///< Copies every field.
    ~BackoffConfig() override;

    /// Has no JSON form: changes nothing.
    void FromJson(const Json::Value& json) override;
    /// Has no JSON form: returns null.
    Json::Value ToJson() const override;
    /// Returns 0: there is no JSON form.
    std::int32_t GetJsonVersion() const override;
};

} // namespace Kestrany::IdentityServices

#endif
