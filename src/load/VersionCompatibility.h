#ifndef ORLINDEX_LOAD_VERSIONCOMPATIBILITY_H
#define ORLINDEX_LOAD_VERSIONCOMPATIBILITY_H

#include <functional>
#include <json/value.h>
#include <optional>
#include <string>
#include <vector>

#include "base/Versions.h"

namespace Kestrany::IdentityServices {

// What the version compatibility file says, and which plugin build serves this library's version. Portable: fuzzed and
// tested natively.

inline constexpr wchar_t VersionCompatibilityFileName[] = L"TALIXVersionCompatibility.config";

/// Versions of this library that a plugin build serves. Every bound and every listed version is a prefix: 1.11 covers
/// all of 1.11.x.
struct VersionRange
{
    VersionParts minVersion;            ///< Inclusive; empty if there is no lower bound.
    VersionParts maxVersion;            ///< Inclusive; empty if there is no upper bound.
    std::vector<VersionParts> versions; ///< Accepted besides the bounds.

    bool IsEmpty() const { return minVersion.empty() && maxVersion.empty() && versions.empty(); }
};

/// A plugin build that the version compatibility file offers.
struct VersionCompatibilityEntry
{
    std::wstring module;
    std::wstring modulePath; ///< As the file has it: path variables are not expanded yet.
    VersionParts version;    ///< The plugin build's own.
    std::vector<VersionRange> compatibleRanges;
    std::vector<VersionRange> excludedRanges; ///< Always empty: part of the matching rule, without a key in the file.
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

/// One element of the file. One with a defect holds what was read before the defect was met.
struct ParsedEntry
{
    VersionCompatibilityEntry entry;
    std::optional<EntryDefect> defect;
};

using WidenText = std::function<std::wstring(const std::string& utf8)>;

/// Parses the elements of the list under `key`, and passes each to `take` in order: a file may hold too many to keep.
/// Null elements are skipped. `wow64` says which of the two path keys counts. The checks of an element run in the order
/// of EntryDefect, and the first that fails is the defect.
void ParseEntries(const Json::Value& root, const std::string& key, bool wow64, const WidenText& widen,
                  const std::function<void(ParsedEntry&& parsed)>& take);

/// How a range matches a version.
enum class RangeMatch
{
    NoVersion, ///< There is no version that could be excluded.
    WithinBounds,
    Listed,
    Empty,
    BelowMinimum,
    AboveMaximum,
    NotListed, ///< The range has no bounds.
    Excluded
};

RangeMatch MatchRange(const VersionRange& range, const VersionParts& version);

bool RangeMatches(const VersionRange& range, const VersionParts& version);

/// Whether the entry serves `version`: some compatible range matches, and no excluded one. Empty ranges do not count.
bool RangesMatch(const VersionCompatibilityEntry& entry, const VersionParts& version);

/// Why the entry does not serve `version`, by the first range that does not match; nullopt if it does.
std::optional<RangeMatch> ExplainMismatch(const VersionCompatibilityEntry& entry, const VersionParts& version);

/// The entry of the highest version among those that serve `version`; of equal ones the first. Null if none does.
const VersionCompatibilityEntry* ChooseEntry(const std::vector<VersionCompatibilityEntry>& entries,
                                             const VersionParts& version);

} // namespace Kestrany::IdentityServices

#endif
