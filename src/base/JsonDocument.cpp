#include "base/JsonDocument.h"

#include <charconv>
#include <exception>
#include <json/reader.h>
#include <memory>
#include <string_view>

#include "base/JsonNumbers.h"

namespace Kestrany::IdentityServices {
namespace {

/// The number after `label` in `text`; 0 where there is none.
int NumberAfter(std::string_view label, std::string_view text)
{
    const std::size_t position = text.find(label);
    int number = 0;
    if (position != std::string_view::npos)
        std::from_chars(text.data() + position + label.size(), text.data() + text.size(), number);
    return number;
}

/// The first error of the reader's report, which reads "* Line 1, Column 2\n  Cause.\n...".
JsonError FirstError(std::string_view report)
{
    constexpr std::string_view indent = "\n  ";
    const std::size_t place = report.find(indent);
    if (place == std::string_view::npos)
        return {0, 0, std::string(report)};
    const std::size_t cause = place + indent.size();
    return {NumberAfter("Line ", report.substr(0, place)), NumberAfter("Column ", report.substr(0, place)),
            std::string(report.substr(cause, report.find('\n', cause) - cause))};
}

} // namespace

std::optional<Json::Value> ParseJson(const std::string& bytes, JsonError* error)
{
    try
    {
        Json::CharReaderBuilder settings;
        settings["collectComments"] = false;
        settings["skipBom"] = true;
        settings["allowTrailingCommas"] = false;
        const std::optional<std::string> inRange = WithNumbersInRange(bytes);
        const std::string& text = inRange ? *inRange : bytes;
        const std::unique_ptr<Json::CharReader> reader(settings.newCharReader());
        Json::Value root;
        std::string report;
        if (reader->parse(text.data(), text.data() + text.size(), &root, error ? &report : nullptr))
            return root;
        if (error)
            *error = FirstError(report);
    }
    catch (const std::exception& exception)
    {
        // The reader throws where a document nests deeper than its limit, or there is too little memory for it: then it
        // throws errors of its own kind, which no host expects.
        if (error)
            *error = {0, 0, exception.what()};
    }
    return std::nullopt;
}

const Json::Value& MemberOf(const Json::Value& value, std::string_view key)
{
    const Json::Value* member = value.isObject() ? value.find(key.data(), key.data() + key.size()) : nullptr;
    return member ? *member : Json::Value::nullSingleton();
}

} // namespace Kestrany::IdentityServices
