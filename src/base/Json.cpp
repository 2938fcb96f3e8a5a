#include "base/Json.h"

#include <charconv>
#include <exception>
#include <json/reader.h>
#include <memory>

#include "base/JsonNumbers.h"

namespace Kestrany::IdentityServices {
namespace {

/// The number after `label` in `text`; 0 if there is none.
int NumberAfter(std::string_view label, std::string_view text)
{
    const std::size_t position = text.find(label);
    int number = 0;
    if (position != std::string_view::npos)
        std::from_chars(text.data() + position + label.size(), text.data() + text.size(), number);
    return number;
}

/// The first error of the parser's report, which reads "* Line 1, Column 2\n  Cause.\n...".
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

Json::CharReaderBuilder SettingsFor(JsonSyntax syntax)
{
    Json::CharReaderBuilder settings;
    if (syntax == JsonSyntax::Strict)
    {
        Json::CharReaderBuilder::strictMode(&settings.settings_);
        return settings;
    }
    settings["collectComments"] = false;
    settings["skipBom"] = true;
    settings["allowTrailingCommas"] = false;
    return settings;
}

JsonDocument Parse(const std::string& text, JsonSyntax syntax)
{
    const std::unique_ptr<Json::CharReader> parser(SettingsFor(syntax).newCharReader());
    JsonDocument document;
    Json::Value root;
    std::string report;
    if (parser->parse(text.data(), text.data() + text.size(), &root, &report))
        document.root = std::move(root);
    else
        document.error = FirstError(report);
    return document;
}

} // namespace

JsonDocument ParseJson(const std::string& bytes, JsonSyntax syntax)
{
    try
    {
        const std::optional<std::string> inRange = WithNumbersInRange(bytes);
        return Parse(inRange ? *inRange : bytes, syntax);
    }
    catch (const std::exception& exception)
    {
        // The parser throws if a document nests deeper than its limit, and if it runs out of memory: then it throws
        // errors of its own kind, which no host expects.
        return {std::nullopt, {0, 0, exception.what()}};
    }
}

const Json::Value& MemberOf(const Json::Value& value, std::string_view key)
{
    const Json::Value* member = value.isObject() ? value.find(key.data(), key.data() + key.size()) : nullptr;
    return member ? *member : Json::Value::nullSingleton();
}

} // namespace Kestrany::IdentityServices
