#ifndef AGENT_IDENTITY_CONFIGURATIONWALK_H
#define AGENT_IDENTITY_CONFIGURATIONWALK_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <json/value.h>

namespace Kestrany::Agent {

/// An error in a file that people edit, and its place: `offset` is the byte in the text.
struct ConfigurationError
{
    std::ptrdiff_t offset;
    std::string key;
    std::string cause;
};

/// The steps of a walk through a JSON document that people edit. Each step throws ConfigurationError for a value that
/// is not allowed; `path` is the key that the error names.
class ConfigurationWalk
{
public:
    /// `text` is the document's, and outlives the walk.
    explicit ConfigurationWalk(const std::string& text) : text_(text) {}

protected:
    using Names = std::vector<std::string>;

    [[noreturn]] static void Fail(std::ptrdiff_t offset, const std::string& key, const std::string& cause);
    [[noreturn]] static void Fail(const Json::Value& value, const std::string& key, const std::string& cause);

    static std::string Join(const std::string& path, const std::string& key);
    static std::string Join(const std::string& path, Json::ArrayIndex index);

    /// Null if there is no such member.
    static const Json::Value* Find(const Json::Value& object, const std::string& key);
    static const Json::Value& Need(const Json::Value& object, const std::string& path, const std::string& key);

    static void RequireObject(const Json::Value& value, const std::string& path);
    static void RequireArray(const Json::Value& value, const std::string& path);
    void AllowKeys(const Json::Value& object, const std::string& path, const Names& allowed) const;
    /// The place of a key, which stands before its value: the parser keeps the places of values only.
    std::ptrdiff_t KeyOffset(const Json::Value& value, const std::string& key) const;

    /// A text of `minimum` to 1024 characters.
    static std::string Text(const Json::Value& value, const std::string& path, std::size_t minimum);
    static bool Boolean(const Json::Value& value, const std::string& path);
    static std::int64_t Integer(const Json::Value& value, const std::string& path, std::int64_t minimum,
                                std::int64_t maximum);
    static std::string Choice(const Json::Value& value, const std::string& path, const Names& allowed);
    /// Sets `seconds` if the object has the key.
    static void TakeSeconds(const Json::Value& object, const std::string& path, const std::string& key,
                            std::int64_t minimum, std::int64_t maximum, std::chrono::seconds& seconds);

private:
    const std::string& text_;
};

/// A file's text without a byte order mark, and its document.
struct ConfigurationText
{
    std::string text;
    Json::Value root;
};

/// Parses the JSON of a file that people edit. nullopt for anything else; `problem` is then file, line, column and
/// cause. `file` is for that message alone.
std::optional<ConfigurationText> ParseConfiguration(const std::string& contents, const std::string& file,
                                                    std::string& problem);

/// The message for an error in the text: file, line, column, key and cause.
std::string ProblemOf(const ConfigurationError& error, const std::string& text, const std::string& file);

/// Parses a file's contents and walks through them: `walk` takes the text and the document, and may throw
/// ConfigurationError. nullopt if the contents are not allowed; `problem` says where and why.
template <class Result, class Walk>
std::optional<Result> ReadConfiguration(const std::string& contents, const std::string& file, std::string& problem,
                                        const Walk& walk)
{
    const std::optional<ConfigurationText> parsed = ParseConfiguration(contents, file, problem);
    if (!parsed)
        return std::nullopt;
    try
    {
        return walk(parsed->text, parsed->root);
    }
    catch (const ConfigurationError& error)
    {
        problem = ProblemOf(error, parsed->text, file);
    }
    return std::nullopt;
}

} // namespace Kestrany::Agent

#endif
