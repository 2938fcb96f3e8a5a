#include "identity/ConfigurationWalk.h"

#include <algorithm>

#include "base/Json.h"
#include "identity/Suggestion.h"
#include "identity/Utf8.h"

namespace Kestrany::Agent {

namespace {

using namespace IdentityServices;

/// Without a byte order mark: neither the parser nor editors count it in columns.
std::string WithoutByteOrderMark(const std::string& contents)
{
    static const std::string mark = "\xEF\xBB\xBF";
    return contents.compare(0, mark.size(), mark) == 0 ? contents.substr(mark.size()) : contents;
}

std::string PlaceOf(const std::string& text, std::ptrdiff_t offset)
{
    const auto size = static_cast<std::ptrdiff_t>(text.size());
    const std::string before = text.substr(0, static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(offset, 0, size)));
    const auto line = std::count(before.begin(), before.end(), '\n') + 1;
    const std::size_t lineStart = before.rfind('\n') + 1; // npos + 1 is 0.
    return std::to_string(line) + ":" + std::to_string(before.size() - lineStart + 1);
}

std::string SyntaxProblem(const std::string& file, const JsonError& error)
{
    // Without a place the parser has given up at its limit of nesting.
    const std::string cause = error.line == 0 ? "it is nested too deeply" : error.text;
    return file + ":" + std::to_string(std::max(error.line, 1)) + ":" + std::to_string(std::max(error.column, 1)) +
           ": not valid JSON: " + cause;
}

} // namespace

void ConfigurationWalk::Fail(std::ptrdiff_t offset, const std::string& key, const std::string& cause)
{
    throw ConfigurationError{offset, key, cause};
}

void ConfigurationWalk::Fail(const Json::Value& value, const std::string& key, const std::string& cause)
{
    Fail(value.getOffsetStart(), key, cause);
}

std::string ConfigurationWalk::Join(const std::string& path, const std::string& key)
{
    return path.empty() ? key : path + "." + key;
}

std::string ConfigurationWalk::Join(const std::string& path, Json::ArrayIndex index)
{
    return path + "[" + std::to_string(index) + "]";
}

const Json::Value* ConfigurationWalk::Find(const Json::Value& object, const std::string& key)
{
    return object.find(key.data(), key.data() + key.size());
}

const Json::Value& ConfigurationWalk::Need(const Json::Value& object, const std::string& path, const std::string& key)
{
    const Json::Value* member = Find(object, key);
    if (member == nullptr)
        Fail(object, path, "the key \"" + key + "\" is missing");
    return *member;
}

void ConfigurationWalk::RequireObject(const Json::Value& value, const std::string& path)
{
    if (!value.isObject())
        Fail(value, path, "must be an object { ... }");
}

void ConfigurationWalk::RequireArray(const Json::Value& value, const std::string& path)
{
    if (!value.isArray())
        Fail(value, path, "must be an array [ ... ]");
}

void ConfigurationWalk::AllowKeys(const Json::Value& object, const std::string& path, const Names& allowed) const
{
    for (const std::string& key : object.getMemberNames())
    {
        if (std::find(allowed.begin(), allowed.end(), key) != allowed.end())
            continue;
        const std::string suggestion = Suggestion(key, allowed);
        Fail(KeyOffset(object[key], key), Join(path, key),
             "unknown key" + (suggestion.empty() ? std::string(".") : "; did you mean \"" + suggestion + "\"?") +
                 " Allowed here: " + Enumerated(allowed));
    }
}

std::ptrdiff_t ConfigurationWalk::KeyOffset(const Json::Value& value, const std::string& key) const
{
    const std::ptrdiff_t offset = value.getOffsetStart();
    const std::size_t found = text_.rfind('"' + key + '"', static_cast<std::size_t>(offset));
    return found == std::string::npos ? offset : static_cast<std::ptrdiff_t>(found);
}

std::string ConfigurationWalk::Text(const Json::Value& value, const std::string& path, std::size_t minimum)
{
    constexpr std::size_t maximum = 1024;
    std::string text;
    if (value.isString())
        text = value.asString();
    const std::size_t size = CharacterCount(text);
    if (!value.isString() || size < minimum || size > maximum || text.find('\0') != std::string::npos ||
        WellFormedSize(text) != text.size())
        Fail(value, path,
             "must be a text of " + std::to_string(minimum) + " to " + std::to_string(maximum) +
                 " characters without a zero character or half a surrogate pair");
    return text;
}

bool ConfigurationWalk::Boolean(const Json::Value& value, const std::string& path)
{
    if (!value.isBool())
        Fail(value, path, "must be true or false");
    return value.asBool();
}

std::int64_t ConfigurationWalk::Integer(const Json::Value& value, const std::string& path, std::int64_t minimum,
                                        std::int64_t maximum)
{
    if (!value.isInt64() || value.isBool() || value.asInt64() < minimum || value.asInt64() > maximum)
        Fail(value, path, "must be a whole number from " + std::to_string(minimum) + " to " + std::to_string(maximum));
    return value.asInt64();
}

std::string ConfigurationWalk::Choice(const Json::Value& value, const std::string& path, const Names& allowed)
{
    const std::string text = value.isString() ? value.asString() : std::string();
    if (!value.isString() || std::find(allowed.begin(), allowed.end(), text) == allowed.end())
    {
        const std::string suggestion = Suggestion(text, allowed);
        Fail(value, path,
             "must be one of " + Enumerated(allowed) +
                 (suggestion.empty() ? std::string() : "; did you mean \"" + suggestion + "\"?"));
    }
    return text;
}

void ConfigurationWalk::TakeSeconds(const Json::Value& object, const std::string& path, const std::string& key,
                                    std::int64_t minimum, std::int64_t maximum, std::chrono::seconds& seconds)
{
    if (const Json::Value* member = Find(object, key))
        seconds = std::chrono::seconds(Integer(*member, Join(path, key), minimum, maximum));
}

std::optional<ConfigurationText> ParseConfiguration(const std::string& contents, const std::string& file,
                                                    std::string& problem)
{
    ConfigurationText parsed;
    parsed.text = WithoutByteOrderMark(contents);
    const std::string& text = parsed.text;
    if (const std::size_t good = WellFormedSize(text); good != text.size())
    {
        problem = file + ":" + PlaceOf(text, static_cast<std::ptrdiff_t>(good)) +
                  ": not UTF-8; save the file in this encoding";
        return std::nullopt;
    }
    if (WithoutByteOrderMark(text) != text)
    {
        problem = file + ":1:1: not valid JSON: a second byte order mark";
        return std::nullopt;
    }
    ParsedJson document = ParseJson(text, JsonSyntax::Strict);
    if (!document.root)
    {
        problem = SyntaxProblem(file, document.error);
        return std::nullopt;
    }
    parsed.root = *std::move(document.root);
    return parsed;
}

std::string ProblemOf(const ConfigurationError& error, const std::string& text, const std::string& file)
{
    return file + ":" + PlaceOf(text, error.offset) + ": " + error.key + ": " + error.cause;
}

} // namespace Kestrany::Agent
