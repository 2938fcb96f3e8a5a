#include "identity/Json.h"

#include <algorithm>
#include <memory>

#include <json/writer.h>

#include "base/Json.h"
#include "base/JsonNumbers.h"

namespace Kestrany::Agent {

namespace {

Json::StreamWriterBuilder* MakeWriter()
{
    auto writer = std::make_unique<Json::StreamWriterBuilder>();
    (*writer)["indentation"] = "";
    (*writer)["emitUTF8"] = true;
    return writer.release();
}

} // namespace

std::string WriteJson(const Json::Value& value)
{
    // Made once, and never destroyed: other threads may write while the process ends.
    static const Json::StreamWriterBuilder& writer = *MakeWriter();
    return Json::writeString(writer, value);
}

std::optional<Json::Value> ReadJsonObject(const std::string& text)
{
    using namespace IdentityServices;
    std::optional<Json::Value> root = ParseJson(text, JsonSyntax::Strict).root;
    return root && root->isObject() ? std::move(root) : std::nullopt;
}

bool HasNumberOutOfRange(const Json::Value& value)
{
    return IdentityServices::IsNumberOutOfRange(value) || std::any_of(value.begin(), value.end(), HasNumberOutOfRange);
}

bool TakeText(const Json::Value& object, const char* key, std::string& text)
{
    const Json::Value& member = object[key];
    if (!member.isString())
        return false;
    std::string taken = member.asString();
    if (taken.find('\0') != std::string::npos)
        return false;
    text = std::move(taken);
    return true;
}

} // namespace Kestrany::Agent
