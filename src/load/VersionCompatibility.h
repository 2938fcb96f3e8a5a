#ifndef ORLINDEX_LOAD_VERSIONCOMPATIBILITY_H
#define ORLINDEX_LOAD_VERSIONCOMPATIBILITY_H

#include <functional>
#include <json/value.h>
#include <optional>
#include <string>
#include <vector>

#include "base/Versions.h"

namespace Kestrany::IdentityServices {

// Parses the version compatibility file, and chooses the plugin build that serves this library's version. Portable:
// fuzzed and tested natively.

inline constexpr wchar_t VersionCompatibilityFileName[] = L"TALIXVersionCompatibility.config";

/// Versions of this library that a plugin build serves. Every bound and every listed version is a prefix: 1.11 means
/// all of 1.11.x.
struct VersionRange
{
    VersionParts minVersion;            ///< Inclusive; empty if there is no lower bound.
    VersionParts maxVersion;            ///< Inclusive; empty if there is no upper bound.
    std::vector<VersionParts> versions; ///< Accepted in addition to the bounds.

    bool IsEmpty() const { return minVersion.empty() && maxVersion.empty() && versions.empty(); }
};

/// A plugin build that the version compatibility file offers.
struct VersionCompatibilityEntry
{
    std::wstring module;
    std::wstring modulePath; ///< As in the file: path variables are not expanded yet.
    VersionParts version;    ///< Version of the plugin build.
    std::vector<VersionRange> compatibleRanges;
    std::vector<VersionRange> excludedRanges; ///< Always empty: part of the matching rule, but not of the file.
    std::size_t position = 0;                 ///< In the file's list, from 0.
};

/// Why an element of the file is ignored.
enum class EntryDefect
{
    ModuleBlank,
    ModulePathBlank,
    VersionBlank,
    RangeMissing,
    RangeInvalid
};

/// One element of the file. An element with a defect holds the values that were read before the defect.
struct ParsedEntry
{
    VersionCompatibilityEntry entry;
    std::optional<EntryDefect> defect;
};

using WidenText = std::function<std::wstring(const std::string& utf8)>;

/// Parses the elements of the list under `key`, and passes each to `take` in order: a file may have too many to store.
/// Null elements are skipped. `wow64` chooses between the two path keys. The checks of an element run in the order of
/// EntryDefect; the first that fails is its defect.
void ParseEntries(const Json::Value& root, const std::string& key, bool wow64, const WidenText& widen,
                  const std::function<void(ParsedEntry&& parsed)>& take);

/// How a range matches a version.
enum class RangeMatch
{
    NoVersion, ///< The version is empty, and counts as a match.
    WithinBounds,
    Listed,
    Empty,
    BelowMinimum,
    AboveMaximum,
    NotListed, ///< The range has no bounds, and does not list the version.
    Excluded
};

RangeMatch MatchRange(const VersionRange& range, const VersionParts& version);

bool RangeMatches(const VersionRange& range, const VersionParts& version);

/// Whether the entry serves `version`: a compatible range matches, and no excluded one does. Empty ranges are ignored.
bool RangesMatch(const VersionCompatibilityEntry& entry, const VersionParts& version);

/// Why the entry does not serve `version`: the first range that does not match. nullopt if it does serve it.
std::optional<RangeMatch> ExplainMismatch(const VersionCompatibilityEntry& entry, const VersionParts& version);

/// The entry with the highest version among those that serve `version`; the first one if versions are equal. Null if
/// none serves it.
const VersionCompatibilityEntry* ChooseEntry(const std::vector<VersionCompatibilityEntry>& entries,
                                             const VersionParts& version);

} // namespace Kestrany::IdentityServices

#endif
