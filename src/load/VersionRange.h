#ifndef ORLINDEX_LOAD_VERSIONRANGE_H
#define ORLINDEX_LOAD_VERSIONRANGE_H

#include <optional>
#include <string>
#include <vector>

#include "base/Versions.h"

namespace Kestrany::IdentityServices {

/// Versions of this library that a plugin build serves. Every bound and every listed version is a prefix: 1.11 covers
/// all of 1.11.x.
struct VersionRange
{
    VersionParts minVersion;            ///< Inclusive; empty where there is no lower bound.
    VersionParts maxVersion;            ///< Inclusive; empty where there is no upper bound.
    std::vector<VersionParts> versions; ///< Accepted besides the bounds.

    bool IsEmpty() const { return minVersion.empty() && maxVersion.empty() && versions.empty(); }
};

/// A plugin build that the version compatibility file offers.
struct VersionCompatibilityEntry
{
    std::wstring module;
    std::wstring modulePath; ///< After expansion of path variables.
    VersionParts version;    ///< The plugin build's own.
    std::vector<VersionRange> compatibleRanges;
    std::vector<VersionRange> excludedRanges; ///< Always empty: part of the matching rule, without a key in the file.
    std::size_t position = 0;                 ///< In the file's list, from 0.
};

/// What a range says of a version.
enum class RangeAnswer
{
    NoVersion, ///< There is no version to be refused.
    WithinBounds,
    Listed,
    Empty,
    BelowMinimum,
    AboveMaximum,
    NotListed, ///< The range has no bounds.
    Excluded
};

RangeAnswer AskRange(const VersionRange& range, const VersionParts& version);

bool RangeMatches(const VersionRange& range, const VersionParts& version);

/// Whether the entry serves `version`: some compatible range matches, and no excluded one. Empty ranges do not count.
bool RangesMatch(const VersionCompatibilityEntry& entry, const VersionParts& version);

/// Why the entry does not serve `version`, from the first range that says so; nothing where it does.
std::optional<RangeAnswer> RefusalOf(const VersionCompatibilityEntry& entry, const VersionParts& version);

/// The entry of the highest version among those that serve `version`; of equal ones the first. Null where none does.
const VersionCompatibilityEntry* ChooseEntry(const std::vector<VersionCompatibilityEntry>& entries,
                                             const VersionParts& version);

} // namespace Kestrany::IdentityServices

#endif
