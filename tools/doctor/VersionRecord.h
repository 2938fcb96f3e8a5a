#ifndef ORLINDEX_DOCTOR_VERSIONRECORD_H
#define ORLINDEX_DOCTOR_VERSIONRECORD_H

#include <optional>
#include <string>

#include "PeFile.h"

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

/// nullopt if the module has no version record that can be read. The platform's own functions are not asked: they
/// believe the sizes and addresses of a damaged file.
std::optional<VersionRecord> ReadVersionRecord(const PeFile& module);

/// The same of a file, which is read as data; nullopt also if it cannot be read or is no Windows module.
std::optional<VersionRecord> ReadVersionRecord(const std::wstring& path);

} // namespace Orlindex::Doctor

#endif
