#include "base/JsonDocument.h"

#include <cstdio>
#include <exception>
#include <json/reader.h>
#include <memory>

namespace Kestrany::IdentityServices {

namespace {

/// The first error of the reader's report, which reads "* Line 1, Column 2\n  Cause.\n...".
JsonError FirstError(const std::string& report)
{
    JsonError error;
    const std::size_t begin = report.find("\n  ");
    if (begin == std::string::npos ||
        std::sscanf(report.c_str(), "* Line %d, Column %d", &error.line, &error.column) != 2)
        return {0, 0, report};
    error.text = report.substr(begin + 3, report.find('\n', begin + 1) - begin - 3);
    return error;
}

} // namespace

std::optional<Json::Value> ParseJson(const std::string& bytes, JsonError* error)
{
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
