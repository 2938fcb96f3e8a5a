#include "base/JsonDocument.h"

#include <charconv>
#include <exception>
#include <json/reader.h>
#include <memory>
#include <string_view>

namespace Kestrany::IdentityServices {
namespace {

/// Longer than a number that means something. The reader's conversion takes time by the square of the length: seconds
/// for a megabyte of digits.
constexpr std::size_t longestNumber = 1000;

/// The position after the text that was opened before `position`; the end where nothing closes it.
std::size_t AfterText(const std::string& bytes, std::size_t position)
{
    while (position < bytes.size() && bytes[position] != '"')
        position += bytes[position] == '\\' ? 2 : 1;
    return position + 1;
}

/// The position after a text or a comment that begins at `position`; `position` itself where none does.
std::size_t AfterTextOrComment(const std::string& bytes, std::size_t position)
{
    if (bytes[position] == '"')
        return AfterText(bytes, position + 1);
    if (bytes.compare(position, 2, "//") == 0)
        return bytes.find_first_of("\r\n", position);
    if (bytes.compare(position, 2, "/*") == 0)
    {
        const std::size_t end = bytes.find("*/", position + 2);
        return end == std::string::npos ? end : end + 2;
    }
    return position;
}

bool HoldsOverlongNumber(const std::string& bytes)
{
    std::size_t digits = 0;
    for (std::size_t position = 0; position < bytes.size();)
    {
        const std::size_t next = AfterTextOrComment(bytes, position);
        const bool isDigit = next == position && bytes[position] >= '0' && bytes[position] <= '9';
        digits = isDigit ? digits + 1 : 0;
        if (digits > longestNumber)
            return true;
        position = next == position ? position + 1 : next;
    }
    return false;
}

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
    if (HoldsOverlongNumber(bytes))
    {
        if (error)
            *error = {0, 0, "A number has more than a thousand digits."};
        return std::nullopt;
    }
    Json::CharReaderBuilder settings;
    settings["collectComments"] = false;
    settings["skipBom"] = true;
    try
    {
        const std::unique_ptr<Json::CharReader> reader(settings.newCharReader());
        Json::Value root;
        std::string report;
        if (reader->parse(bytes.data(), bytes.data() + bytes.size(), &root, error ? &report : nullptr))
            return root;
        if (error)
            *error = FirstError(report);
    }
    catch (const std::exception& exception)
    {
        // The reader throws where a document nests deeper than its limit, or is too large for the memory left.
        if (error)
            *error = {0, 0, exception.what()};
    }
    return std::nullopt;
}

const Json::Value& MemberOf(const Json::Value& value, const std::string& key)
{
    const Json::Value* member = value.isObject() ? value.find(key.data(), key.data() + key.size()) : nullptr;
    return member ? *member : Json::Value::nullSingleton();
}

} // namespace Kestrany::IdentityServices
