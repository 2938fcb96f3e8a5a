#ifndef ORLINDEX_LOAD_COMPATIBILITYDOCUMENT_H
#define ORLINDEX_LOAD_COMPATIBILITYDOCUMENT_H

#include <functional>
#include <json/value.h>
#include <string>
#include <vector>

#include "load/VersionRange.h"

namespace Kestrany::IdentityServices {

/// Why an element of the version compatibility file is ignored.
enum class EntryDefect
{
    ModuleBlank,
    ModulePathBlank,
    VersionBlank,
    RangeMissing,
    RangeInvalid
};

struct EntryReading
{
    bool wow64; ///< Which of the two path keys counts.
    std::function<std::wstring(const std::string& utf8)> widen;
    std::function<void(std::wstring& text)> expand;  ///< Expands path variables.
    std::function<void(EntryDefect defect)> ignored; ///< Called for each element that is skipped.
    /// Called for each element that is skipped, with what was read of it. May be empty.
    std::function<void(const VersionCompatibilityEntry& entry, EntryDefect defect)> examined = {};
};

/// The sound elements of the array under `key`, in file order; of an object in its place, the members by name.
std::vector<VersionCompatibilityEntry> ReadEntries(const Json::Value& root, const std::string& key,
                                                   const EntryReading& reading);

} // namespace Kestrany::IdentityServices

#endif
