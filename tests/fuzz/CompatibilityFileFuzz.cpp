// A version compatibility file of any bytes, read for both kinds of process and for several versions of the library.

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "Require.h"
#include "base/Json.h"
#include "load/VersionCompatibility.h"
#include "locate/PathVariables.h"

using namespace Kestrany::IdentityServices;
using OrlindexTest::Require;

namespace {

constexpr char Key[] = "ssoClientPlugin";

/// Replaces the platform's conversion: one character for each byte.
std::wstring WidenBytes(const std::string& text)
{
    std::wstring wide;
    for (const char byte : text)
        wide += static_cast<wchar_t>(static_cast<unsigned char>(byte));
    return wide;
}

void Expand(std::wstring& text)
{
    ExpandPathVariables(text, [](const std::wstring& name, std::wstring& value) {
        value = L"C:\\value of " + name;
        return !name.empty();
    });
}

std::vector<VersionCompatibilityEntry> Read(const Json::Value& root, bool wow64)
{
    std::size_t ignored = 0;
    std::vector<VersionCompatibilityEntry> entries;
    ParseEntries(root, Key, wow64, WidenBytes, [&](ParsedEntry&& parsed) {
        Expand(parsed.entry.modulePath);
        if (parsed.defect)
            ++ignored;
        else
            entries.push_back(std::move(parsed.entry));
    });
    const Json::Value& list = MemberOf(root, Key);
    const auto elements = static_cast<std::size_t>(
        std::count_if(list.begin(), list.end(), [](const Json::Value& element) { return !element.isNull(); }));
    Require(entries.size() + ignored == elements, "every element is read or ignored, and counted once");
    return entries;
}

void RequireSound(const VersionCompatibilityEntry& entry)
{
    Require(!entry.module.empty() && !entry.modulePath.empty() && !entry.version.empty(), "nothing is blank");
    Require(entry.compatibleRanges.size() == 1 && !entry.compatibleRanges[0].IsEmpty(), "there is one range");
    Require(entry.excludedRanges.empty(), "the file excludes nothing");
}

void RequireChoice(const std::vector<VersionCompatibilityEntry>& entries, const VersionParts& version)
{
    const VersionCompatibilityEntry* chosen = ChooseEntry(entries, version);
    const auto serves = [&](const VersionCompatibilityEntry& entry) { return RangesMatch(entry, version); };
    Require((chosen != nullptr) == std::any_of(entries.begin(), entries.end(), serves),
            "there is a choice exactly where an entry serves");
    Require(!chosen || serves(*chosen), "the chosen entry serves");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto root = ParseJson(std::string(data, data + size)).root;
    if (!root)
        return 0;
    for (const bool wow64 : {false, true})
    {
        const auto entries = Read(*root, wow64);
        std::for_each(entries.begin(), entries.end(), RequireSound);
        for (const char* version : {"1.11.13.3", "", "1", "2.0", "1.11.rc", "."})
            RequireChoice(entries, SplitVersion(version));
    }
    return 0;
}
