#include "load/CompatibilityDocument.h"

#include <optional>

#include "base/JsonDocument.h"
#include "base/JsonNumbers.h"

namespace Kestrany::IdentityServices {
namespace {

/// Empty for a missing key; nothing for a value that is no scalar, or that no text can tell.
std::optional<std::string> ScalarText(const Json::Value& value)
{
    if (value.isArray() || value.isObject() || IsNumberOutOfRange(value))
        return std::nullopt;
    return value.asString();
}

/// Blank for everything that cannot name anything.
std::string TextAt(const Json::Value& element, const char* key)
{
    return ScalarText(MemberOf(element, key)).value_or(std::string());
}

std::optional<std::vector<VersionParts>> ReadVersionList(const Json::Value& list)
{
    if (!list.isNull() && !list.isArray())
        return std::nullopt;
    std::vector<VersionParts> versions;
    for (const Json::Value& element : list)
    {
        const std::optional<std::string> text = ScalarText(element);
        if (!text)
            return std::nullopt;
        if (!text->empty())
            versions.push_back(SplitVersion(*text));
    }
    return versions;
}

std::optional<VersionRange> ReadRange(const Json::Value& object)
{
    if (!object.isObject())
        return std::nullopt;
    const auto minVersion = ScalarText(MemberOf(object, "minVersion"));
    const auto maxVersion = ScalarText(MemberOf(object, "maxVersion"));
    auto versions = ReadVersionList(MemberOf(object, "versions"));
    if (!minVersion || !maxVersion || !versions)
        return std::nullopt;
    VersionRange range = {SplitVersion(*minVersion), SplitVersion(*maxVersion), std::move(*versions)};
    if (range.IsEmpty())
        return std::nullopt;
    return range;
}

/// The checks run in this order, and the first that fails names the defect.
std::optional<EntryDefect> ReadEntry(const Json::Value& element, const EntryReading& reading,
                                     VersionCompatibilityEntry& entry)
{
    entry.module = reading.widen(TextAt(element, "module"));
    if (entry.module.empty())
        return EntryDefect::ModuleBlank;
    // Neither key stands in for the other: a module for the other kind of process could not be loaded.
    entry.modulePath = reading.widen(TextAt(element, reading.wow64 ? "modulePathWoW64" : "modulePath"));
    if (entry.modulePath.empty())
        return EntryDefect::ModulePathBlank;
    reading.expand(entry.modulePath);
    entry.version = SplitVersion(TextAt(element, "version"));
    if (entry.version.empty())
        return EntryDefect::VersionBlank;
    const Json::Value& compatible = MemberOf(element, "compatibleSsoServicesVersion");
    if (compatible.isNull())
        return EntryDefect::RangeMissing;
    const std::optional<VersionRange> range = ReadRange(compatible);
    if (!range)
        return EntryDefect::RangeInvalid;
    entry.compatibleRanges = {*range};
    return std::nullopt;
}

} // namespace

std::vector<VersionCompatibilityEntry> ReadEntries(const Json::Value& root, const std::string& key,
                                                   const EntryReading& reading)
{
    std::vector<VersionCompatibilityEntry> entries;
    std::size_t position = 0;
    for (const Json::Value& element : MemberOf(root, key))
    {
        VersionCompatibilityEntry entry;
        entry.position = position++;
        if (element.isNull())
            continue;
        const std::optional<EntryDefect> defect = ReadEntry(element, reading, entry);
        if (!defect)
        {
            entries.push_back(std::move(entry));
            continue;
        }
        reading.ignored(*defect);
        if (reading.examined)
            reading.examined(entry, *defect);
    }
    return entries;
}

} // namespace Kestrany::IdentityServices
