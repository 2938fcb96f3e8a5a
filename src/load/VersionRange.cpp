#include "load/VersionRange.h"

#include <algorithm>

namespace Kestrany::IdentityServices {
namespace {

/// Compares over the parts that `bound` has, so that a bound works as a prefix.
int CompareWithBound(const VersionParts& version, const VersionParts& bound)
{
    return CompareVersions(version, bound, static_cast<int>(bound.size()));
}

RangeAnswer AskBounds(const VersionRange& range, const VersionParts& version)
{
    if (range.minVersion.empty() && range.maxVersion.empty())
        return RangeAnswer::NotListed;
    if (!range.minVersion.empty() && CompareWithBound(version, range.minVersion) < 0)
        return RangeAnswer::BelowMinimum;
    if (!range.maxVersion.empty() && CompareWithBound(version, range.maxVersion) > 0)
        return RangeAnswer::AboveMaximum;
    return RangeAnswer::WithinBounds;
}

bool IsMatch(RangeAnswer answer)
{
    return answer == RangeAnswer::NoVersion || answer == RangeAnswer::WithinBounds || answer == RangeAnswer::Listed;
}

/// The answer of the first range that matches, else of the first that does not. Empty ranges are not asked; nothing
/// where all are empty.
std::optional<RangeAnswer> AskRanges(const std::vector<VersionRange>& ranges, const VersionParts& version)
{
    std::optional<RangeAnswer> result;
    for (const VersionRange& range : ranges)
    {
        if (range.IsEmpty())
            continue;
        const RangeAnswer answer = AskRange(range, version);
        if (IsMatch(answer))
            return answer;
        if (!result)
            result = answer;
    }
    return result;
}

} // namespace

RangeAnswer AskRange(const VersionRange& range, const VersionParts& version)
{
    if (version.empty())
        return RangeAnswer::NoVersion;
    if (range.IsEmpty())
        return RangeAnswer::Empty;
    const RangeAnswer bounds = AskBounds(range, version);
    const bool listed =
        !IsMatch(bounds) &&
        std::any_of(range.versions.begin(), range.versions.end(), [&](const VersionParts& listedVersion) {
            return CompareVersions(listedVersion, version, static_cast<int>(listedVersion.size())) == 0;
        });
    return listed ? RangeAnswer::Listed : bounds;
}

bool RangeMatches(const VersionRange& range, const VersionParts& version)
{
    return IsMatch(AskRange(range, version));
}

std::optional<RangeAnswer> RefusalOf(const VersionCompatibilityEntry& entry, const VersionParts& version)
{
    if (version.empty())
        return std::nullopt;
    const std::optional<RangeAnswer> compatible = AskRanges(entry.compatibleRanges, version);
    if (compatible && !IsMatch(*compatible))
        return compatible;
    const std::optional<RangeAnswer> excluded = AskRanges(entry.excludedRanges, version);
    if (excluded && IsMatch(*excluded))
        return RangeAnswer::Excluded;
    return std::nullopt;
}

bool RangesMatch(const VersionCompatibilityEntry& entry, const VersionParts& version)
{
    return !RefusalOf(entry, version);
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
