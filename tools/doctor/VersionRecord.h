#ifndef ORLINDEX_DOCTOR_VERSIONRECORD_H
#define ORLINDEX_DOCTOR_VERSIONRECORD_H

#include <optional>
#include <string>

#include "PeFile.h"

namespace Orlindex::Doctor {

/// The version record of a file, in UTF-8. A text that is missing is empty.
struct VersionRecord
{
    std::string fileVersion; ///< Four numbers.
    std::string company;
    std::string description;
    std::string specialBuild;
    std::string pinnedRoot; ///< Of Orlindex.dll: the SHA-256 digest of the root that it accepts, in hexadecimal.
    std::string signers;    ///< Of Orlindex.dll: the names that it accepts, separated by semicolons.
};

/// nullopt if the module has no version record that can be read. The platform's own functions are not used: they trust
/// the sizes and addresses of a damaged file.
std::optional<VersionRecord> ReadVersionRecord(const PeFile& module);

/// The same for a file; nullopt also if it cannot be read or is not a Windows module.
std::optional<VersionRecord> ReadVersionRecord(const std::wstring& path);

} // namespace Orlindex::Doctor

#endif
