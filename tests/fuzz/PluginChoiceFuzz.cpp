// The choice of a plugin build: valid documents made from the input, compared with a second implementation.

#include <algorithm>
#include <cstdint>
#include <list>
#include <string>
#include <vector>

#include "ByteReader.h"
#include "Require.h"
#include "load/VersionCompatibility.h"

using namespace Kestrany::IdentityServices;
using OrlindexTest::ByteReader;
using OrlindexTest::Require;

namespace {

constexpr char Key[] = "ssoClientPlugin";
constexpr unsigned MostEntries = 8;

std::string MakeVersion(ByteReader& bytes)
{
    static constexpr const char* parts[] = {"1",  "11", "13", "3",   "2",    "9",   "10", "0", "01",
                                            "1a", "",   "rc", "RC1", "-1",   "+1",  " 1", "x", "99999999999999999999",
                                            "12", "4",  "02", "1.",  "1.11", "13.", "3.0"};
    std::string version = bytes.Pick(parts);
    for (unsigned more = bytes.Below(4); more > 0; --more)
        version += '.' + bytes.Pick(parts);
    return version;
}

Json::Value MakeRange(ByteReader& bytes)
{
    Json::Value range(Json::objectValue);
    const unsigned kinds = bytes.Byte();
    if (kinds & 1)
        range["minVersion"] = MakeVersion(bytes);
    if (kinds & 2)
        range["maxVersion"] = MakeVersion(bytes);
    if (kinds & 4)
    {
        range["versions"] = Json::Value(Json::arrayValue);
        for (unsigned more = bytes.Below(4); more > 0; --more)
            range["versions"].append(MakeVersion(bytes));
    }
    return range;
}

/// An entry whose module name is its position, so that equal entries can be distinguished.
Json::Value MakeEntry(ByteReader& bytes, unsigned place)
{
    Json::Value entry(Json::objectValue);
    entry["module"] = std::to_string(place);
    const unsigned paths = bytes.Byte();
    if (paths % 8 != 0)
        entry["modulePath"] = "plugin.dll";
    if (paths % 8 != 1)
        entry["modulePathWoW64"] = "plugin32.dll";
    entry["version"] = MakeVersion(bytes);
    entry["compatibleSsoServicesVersion"] = MakeRange(bytes);
    return entry;
}

std::vector<VersionCompatibilityEntry> ReadMade(ByteReader& bytes)
{
    Json::Value root(Json::objectValue);
    const unsigned count = bytes.Below(MostEntries + 1);
    for (unsigned place = 0; place < count; ++place)
        root[Key].append(MakeEntry(bytes, place));
    const bool wow64 = bytes.Flag();
    const auto widen = [](const std::string& text) { return std::wstring(text.begin(), text.end()); };
    std::vector<VersionCompatibilityEntry> entries;
    ParseEntries(root, Key, wow64, widen, [&entries](ParsedEntry&& parsed) {
        if (!parsed.defect)
            entries.push_back(std::move(parsed.entry));
    });
    for (const VersionCompatibilityEntry& entry : entries)
        Require(entry.modulePath == (wow64 ? L"plugin32.dll" : L"plugin.dll"),
                "the path is that of the process's kind");
    return entries;
}

bool IsHigher(const VersionCompatibilityEntry& a, const VersionCompatibilityEntry& b)
{
    return CompareVersions(a.version, b.version) > 0;
}

/// Whether "higher" is an order for these entries: unusual versions can be higher than each other in a circle.
bool CanBeSorted(const std::vector<VersionCompatibilityEntry>& entries)
{
    const auto notHigher = [](const auto& a, const auto& b) { return !IsHigher(a, b); };
    for (const auto& a : entries)
        for (const auto& b : entries)
            for (const auto& c : entries)
                if (notHigher(a, b) && notHigher(b, c) && !notHigher(a, c))
                    return false;
    return true;
}

/// The documented choice: highest first, equal ones in the order of the file, and the first that is compatible.
const VersionCompatibilityEntry* ChooseBySorting(std::list<VersionCompatibilityEntry>& entries,
                                                 const VersionParts& version)
{
    entries.sort(IsHigher); // A list's sort is stable.
    const auto found =
        std::find_if(entries.begin(), entries.end(), [&](const auto& entry) { return RangesMatch(entry, version); });
    return found == entries.end() ? nullptr : &*found;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    ByteReader bytes(data, size);
    const VersionParts version = bytes.Flag() ? SplitVersion(MakeVersion(bytes)) : SplitVersion("1.11.13.3");
    const std::vector<VersionCompatibilityEntry> entries = ReadMade(bytes);
    const VersionCompatibilityEntry* chosen = ChooseEntry(entries, version);
    Require(!chosen || RangesMatch(*chosen, version), "the chosen entry serves");
    if (!CanBeSorted(entries))
        return 0;
    std::list<VersionCompatibilityEntry> sorted(entries.begin(), entries.end());
    const VersionCompatibilityEntry* expected = ChooseBySorting(sorted, version);
    Require((chosen != nullptr) == (expected != nullptr), "an entry is chosen exactly where one serves");
    Require(!chosen || chosen->module == expected->module, "the choice is the first of the highest that serve");
    return 0;
}
