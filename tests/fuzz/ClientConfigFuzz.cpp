// A client config file of any bytes.

#include <cstdint>
#include <string>

#include "Require.h"
#include "base/Json.h"
#include "locate/ClientConfig.h"

using namespace Kestrany::IdentityServices;
using OrlindexTest::Require;

namespace {

bool HoldsText(const Json::Value& server, const char* key, const std::string& text)
{
    const Json::Value& value = MemberOf(server, key);
    return value.isString() ? value.asString() == text : text.empty();
}

void RequireWhatTheDocumentSays(const Json::Value& root, const ClientConfigValues& values)
{
    const Json::Value& server = MemberOf(root, "ssoServer");
    Require(HoldsText(server, "bundleId", values.bundleId), "the bundle id is the document's");
    Require(HoldsText(server, "searchPaths", values.searchPaths), "the search paths are the document's");
    Require(HoldsText(server, "VersionCompatibilityConfigfilePath", values.versionCompatibilityConfigFilePath),
            "the path of the version compatibility file is the document's");
    Require(!values.supportBothLocalAndAdmin || MemberOf(server, "supportBothLocalAndAdmin") == Json::Value(true),
            "the flag is set by true alone");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string bytes(data, data + size);
    const auto values = ParseClientConfig(bytes).values;
    const auto root = ParseJson(bytes).root;
    Require(values.has_value() == root.has_value(), "values are read exactly where the text is JSON");
    if (values)
        RequireWhatTheDocumentSays(*root, *values);
    return 0;
}
