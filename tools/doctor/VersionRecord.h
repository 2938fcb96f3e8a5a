#ifndef ORLINDEX_DOCTOR_VERSIONRECORD_H
#define ORLINDEX_DOCTOR_VERSIONRECORD_H

#include <cstddef>
#include <optional>
#include <string>

namespace Orlindex::Doctor {

/// The version record of a file, in UTF-8. A text that the record lacks is empty.
struct VersionRecord
{
    std::string fileVersion; ///< Four numbers.
    std::string company;
    std::string description;
    std::string specialBuild;
    std::string pinnedRoot; ///< Of a library: the root that it accepts, SHA-256 in hexadecimal digits.
    std::string signers;    ///< Of a library: the names that it accepts, separated by semicolons.
};

/// Nothing where the file cannot be read or has no version record. The file is read as data.
std::optional<VersionRecord> ReadVersionRecord(const std::wstring& path);

/// The same of a record's bytes, which may be hostile: nothing outside of them is read.
std::optional<VersionRecord> ParseVersionRecord(const void* record, std::size_t size);

} // namespace Orlindex::Doctor

#endif
