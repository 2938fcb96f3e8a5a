#include "load/VersionRange.h"

#include <algorithm>

namespace Kestrany::IdentityServices {
namespace {

/// Compares over the parts that `bound` has, so that a bound works as a prefix.
int CompareWithBound(const VersionParts& version, const VersionParts& bound)
{
    return CompareVersions(version, bound, static_cast<int>(bound.size()));
}

bool WithinBounds(const VersionRange& range, const VersionParts& version)
{
    if (range.minVersion.empty() && range.maxVersion.empty())
        return false;
    return (range.minVersion.empty() || CompareWithBound(version, range.minVersion) >= 0) &&
           (range.maxVersion.empty() || CompareWithBound(version, range.maxVersion) <= 0);
}

enum class Walk
{
    AllEmpty,
    Matched,
    NotMatched
};

Walk WalkRanges(const std::vector<VersionRange>& ranges, const VersionParts& version)
{
    Walk result = Walk::AllEmpty;
    for (const VersionRange& range : ranges)
    {
        if (range.IsEmpty())
            continue;
        if (RangeMatches(range, version))
            return Walk::Matched;
        result = Walk::NotMatched;
    }
    return result;
}

} // namespace

bool RangeMatches(const VersionRange& range, const VersionParts& version)
{
    if (version.empty())
        return true;
    if (range.IsEmpty())
        return false;
    return WithinBounds(range, version) ||
           std::any_of(range.versions.begin(), range.versions.end(), [&](const VersionParts& listed) {
               return CompareVersions(listed, version, static_cast<int>(listed.size())) == 0;
           });
}

bool RangesMatch(const VersionCompatibilityEntry& entry, const VersionParts& version)
{
    if (version.empty())
        return true;
    return WalkRanges(entry.compatibleRanges, version) != Walk::NotMatched &&
           WalkRanges(entry.excludedRanges, version) != Walk::Matched;
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
