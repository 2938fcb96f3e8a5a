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
    // not covered: The parser's report of a text that is not JSON always has this shape.
    if (position != std::string_view::npos)
        std::from_chars(text.data() + position + label.size(), text.data() + text.size(), number);
    return number;
}

/// The first error of the parser's report, which reads "* Line 1, Column 2\n  Cause.\n...".
JsonError FirstError(std::string_view report)
{
    constexpr std::string_view indent = "\n  ";
    const std::size_t place = report.find(indent);
    // not covered from here: The parser's report of a text that is not JSON always has this shape.
    if (place == std::string_view::npos)
        return {0, 0, std::string(report)};
    // not covered to here
    const std::size_t cause = place + indent.size();
    return {NumberAfter("Line ", report.substr(0, place)), NumberAfter("Column ", report.substr(0, place)),
            std::string(report.substr(cause, report.find('\n', cause) - cause))};
}

Json::CharReaderBuilder* MakeBuilder(JsonSyntax syntax)
{
    auto builder = std::make_unique<Json::CharReaderBuilder>();
    Json::CharReaderBuilder& settings = *builder;
    if (syntax == JsonSyntax::Strict)
    {
        Json::CharReaderBuilder::strictMode(&settings.settings_);
        return builder.release();
    }
    settings["collectComments"] = false;
    settings["skipBom"] = true;
    settings["allowTrailingCommas"] = false;
    return builder.release();
}

/// Made once, and never destroyed: other threads may parse while the process ends.
const Json::CharReaderBuilder& BuilderFor(JsonSyntax syntax)
{
    static const Json::CharReaderBuilder* const configuration = MakeBuilder(JsonSyntax::Configuration);
    static const Json::CharReaderBuilder* const strict = MakeBuilder(JsonSyntax::Strict);
    // not covered: Only the agent reads strictly; its tests do.
    return syntax == JsonSyntax::Strict ? *strict : *configuration;
}

ParsedJson Parse(const std::string& text, JsonSyntax syntax)
{
    const std::unique_ptr<Json::CharReader> parser(BuilderFor(syntax).newCharReader());
    ParsedJson parsed;
    Json::Value root;
    std::string report;
    if (parser->parse(text.data(), text.data() + text.size(), &root, &report))
        parsed.root = std::move(root);
    else
        parsed.error = FirstError(report);
    return parsed;
}

} // namespace

ParsedJson ParseJson(const std::string& bytes, JsonSyntax syntax)
{
    try
    {
        const std::optional<std::string> inRange = WithNumbersInRange(bytes);
        return Parse(inRange ? *inRange : bytes, syntax);
    }
    catch (const std::exception& exception)
    {
        // The parser throws its own exceptions if the text nests deeper than its limit, or if the system is out of
        // memory. No host expects those.
        return {std::nullopt, {0, 0, exception.what()}};
    }
}

const Json::Value& MemberOf(const Json::Value& value, std::string_view key)
{
    const Json::Value* member = value.isObject() ? value.find(key.data(), key.data() + key.size()) : nullptr;
    return member ? *member : Json::Value::nullSingleton();
}

} // namespace Kestrany::IdentityServices
