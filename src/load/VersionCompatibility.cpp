#include "load/VersionCompatibility.h"

#include <algorithm>
#include <utility>

#include "base/Json.h"
#include "base/JsonNumbers.h"

namespace Kestrany::IdentityServices {
namespace {

/// Empty for a missing key; nullopt for a value that is not a scalar, or that no text can represent.
std::optional<std::string> ScalarText(const Json::Value& value)
{
    if (value.isArray() || value.isObject() || IsNumberOutOfRange(value))
        return std::nullopt;
    return value.asString();
}

/// Blank for everything that cannot be a name.
std::string TextAt(const Json::Value& element, const char* key)
{
    return ScalarText(MemberOf(element, key)).value_or(std::string());
}

std::optional<std::vector<VersionParts>> ParseVersionList(const Json::Value& list)
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

std::optional<VersionRange> ParseRange(const Json::Value& object)
{
    if (!object.isObject())
        return std::nullopt;
    const auto minVersion = ScalarText(MemberOf(object, "minVersion"));
    const auto maxVersion = ScalarText(MemberOf(object, "maxVersion"));
    auto versions = ParseVersionList(MemberOf(object, "versions"));
    if (!minVersion || !maxVersion || !versions)
        return std::nullopt;
    VersionRange range = {SplitVersion(*minVersion), SplitVersion(*maxVersion), std::move(*versions)};
    if (range.IsEmpty())
        return std::nullopt;
    return range;
}

/// Returns the first defect.
std::optional<EntryDefect> FillEntry(const Json::Value& element, bool wow64, const WidenText& widen,
                                     VersionCompatibilityEntry& entry)
{
    entry.module = widen(TextAt(element, "module"));
    if (entry.module.empty())
        return EntryDefect::ModuleBlank;
    // Neither key stands in for the other: a module for the other kind of process could not be loaded.
    entry.modulePath = widen(TextAt(element, wow64 ? "modulePathWoW64" : "modulePath"));
    if (entry.modulePath.empty())
        return EntryDefect::ModulePathBlank;
    entry.version = SplitVersion(TextAt(element, "version"));
    if (entry.version.empty())
        return EntryDefect::VersionBlank;
    const Json::Value& compatible = MemberOf(element, "compatibleSsoServicesVersion");
    if (compatible.isNull())
        return EntryDefect::RangeMissing;
    const std::optional<VersionRange> range = ParseRange(compatible);
    if (!range)
        return EntryDefect::RangeInvalid;
    entry.compatibleRanges = {*range};
    return std::nullopt;
}

/// Compares over the parts that `bound` has, so that a bound works as a prefix.
int CompareWithBound(const VersionParts& version, const VersionParts& bound)
{
    return CompareVersions(version, bound, static_cast<int>(bound.size()));
}

RangeMatch MatchBounds(const VersionRange& range, const VersionParts& version)
{
    if (range.minVersion.empty() && range.maxVersion.empty())
        return RangeMatch::NotListed;
    if (!range.minVersion.empty() && CompareWithBound(version, range.minVersion) < 0)
        return RangeMatch::BelowMinimum;
    if (!range.maxVersion.empty() && CompareWithBound(version, range.maxVersion) > 0)
        return RangeMatch::AboveMaximum;
    return RangeMatch::WithinBounds;
}

bool Matches(RangeMatch match)
{
    return match == RangeMatch::NoVersion || match == RangeMatch::WithinBounds || match == RangeMatch::Listed;
}

/// How the first matching range matches, else the first that does not. Empty ranges do not count; nullopt if all are
/// empty.
std::optional<RangeMatch> MatchRanges(const std::vector<VersionRange>& ranges, const VersionParts& version)
{
    std::optional<RangeMatch> result;
    for (const VersionRange& range : ranges)
    {
        if (range.IsEmpty())
            continue;
        const RangeMatch match = MatchRange(range, version);
        if (Matches(match))
            return match;
        if (!result)
            result = match;
    }
    return result;
}

} // namespace

void ParseEntries(const Json::Value& root, const std::string& key, bool wow64, const WidenText& widen,
                  const std::function<void(ParsedEntry&& parsed)>& take)
{
    std::size_t position = 0;
    for (const Json::Value& element : MemberOf(root, key))
    {
        ParsedEntry parsed;
        parsed.entry.position = position++;
        if (element.isNull())
            continue;
        parsed.defect = FillEntry(element, wow64, widen, parsed.entry);
        take(std::move(parsed));
    }
}

RangeMatch MatchRange(const VersionRange& range, const VersionParts& version)
{
    if (version.empty())
        return RangeMatch::NoVersion;
    if (range.IsEmpty())
        return RangeMatch::Empty;
    const RangeMatch bounds = MatchBounds(range, version);
    const bool listed =
        !Matches(bounds) &&
        std::any_of(range.versions.begin(), range.versions.end(), [&](const VersionParts& listedVersion) {
            return CompareVersions(listedVersion, version, static_cast<int>(listedVersion.size())) == 0;
        });
    return listed ? RangeMatch::Listed : bounds;
}

bool RangeMatches(const VersionRange& range, const VersionParts& version)
{
    return Matches(MatchRange(range, version));
}

std::optional<RangeMatch> ExplainMismatch(const VersionCompatibilityEntry& entry, const VersionParts& version)
{
    if (version.empty())
        return std::nullopt;
    const std::optional<RangeMatch> compatible = MatchRanges(entry.compatibleRanges, version);
    if (compatible && !Matches(*compatible))
        return compatible;
    const std::optional<RangeMatch> excluded = MatchRanges(entry.excludedRanges, version);
    if (excluded && Matches(*excluded))
        return RangeMatch::Excluded;
    return std::nullopt;
}

bool RangesMatch(const VersionCompatibilityEntry& entry, const VersionParts& version)
{
    return !ExplainMismatch(entry, version);
}

const VersionCompatibilityEntry* ChooseEntry(const std::vector<VersionCompatibilityEntry>& entries,
                                             const VersionParts& version)
{
    // One pass that keeps the highest: the comparison is not transitive for odd versions, so nothing is sorted by it.
    const VersionCompatibilityEntry* chosen = nullptr;
    for (const VersionCompatibilityEntry& entry : entries)
    {
        if (RangesMatch(entry, version) && (!chosen || CompareVersions(entry.version, chosen->version) > 0))
            chosen = &entry;
    }
    return chosen;
}

} // namespace Kestrany::IdentityServices
