// What the agent reads from files and requests: a product, and a kept login.

#include <cstdint>
#include <string>

#include "Require.h"
#include "identity/simulated/LoginRecord.h"
#include "plugin/ProductSettings.h"

using namespace Kestrany::Agent;
using namespace Kestrany::Agent::Simulated;
using OrlindexTest::Require;

namespace {

void RequireProductKept(const std::string& text)
{
    const auto product = ProductFromJson(text);
    if (!product)
        return;
    const std::string written = ProductToJson(*product);
    const auto again = ProductFromJson(written);
    Require(again.has_value(), "a product that was written can be read");
    Require(ProductToJson(*again) == written, "a product is kept by writing and reading");
}

void RequireLoginKept(const std::string& text)
{
    const LoginOrigin origin = {"identity", TALIX_SERVER_PRODUCTION};
    std::string problem;
    const auto record = ReadLoginRecord(text, origin, problem);
    Require(record.has_value() == problem.empty(), "there is a problem exactly where there is no login");
    if (!record)
        return;
    const std::string written = WriteLoginRecord(*record, origin);
    const auto again = ReadLoginRecord(written, origin, problem);
    Require(again.has_value(), "a login that was written can be read");
    Require(WriteLoginRecord(*again, origin) == written, "a login is kept by writing and reading");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(data, data + size);
    RequireProductKept(text);
    RequireLoginKept(text);
    return 0;
}
