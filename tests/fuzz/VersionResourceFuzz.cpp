// Version resources of any bytes: everything that is read is inside them, and bytes behind them do not count.

#include <cstdint>
#include <string>
#include <string_view>

#include "Require.h"
#include "doctor/VersionResource.h"

using Orlindex::Doctor::VersionResource;
using OrlindexTest::Require;

namespace {

constexpr std::size_t LargestResource = 0xFFFF;
constexpr const char* Names[] = {"CompanyName",      "FileDescription", "SpecialBuild",
                                 "PinnedRootSha256", "AcceptedSigners", ""};

/// All contents of the resource, one on each line.
std::u16string ContentsOf(const VersionResource& resource)
{
    std::u16string contents;
    if (const auto version = resource.FileVersion())
        contents.assign(version->begin(), version->end());
    for (const char* const name : Names)
    {
        const std::u16string text = resource.Text(name);
        Require(text.find(u'\0') == std::u16string::npos, "a text ends at its zero");
        Require(text.size() * 2 <= LargestResource, "a text lies within the resource");
        contents += u'\n' + text;
    }
    return contents;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto resource = VersionResource::Read(bytes);
    if (!resource)
        return 0;
    const std::u16string contents = ContentsOf(*resource);
    const std::string longer = std::string(bytes) + "CompanyName";
    const auto again = VersionResource::Read(longer);
    Require(again.has_value() && ContentsOf(*again) == contents, "what follows a resource is not of it");
    return 0;
}
