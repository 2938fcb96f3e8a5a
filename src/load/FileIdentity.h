#ifndef ORLINDEX_LOAD_FILEIDENTITY_H
#define ORLINDEX_LOAD_FILEIDENTITY_H

#include <cstdint>
#include <optional>
#include <windows.h>

#include "base/FileHandle.h"

namespace Kestrany::IdentityServices {

/// Which file it is, whatever path led to it.
struct FileIdentity
{
    DWORD volume; ///< Serial number.
    std::uint64_t index;

    bool operator==(const FileIdentity& other) const { return volume == other.volume && index == other.index; }
};

/// Nothing where the file is not open, or its file system does not say.
std::optional<FileIdentity> IdentityOf(const FileHandle& file);

/// Of the file that a loaded module was mapped from. Asked of the mapping, not of the path that the module was loaded
/// by: that one may lead elsewhere by now.
std::optional<FileIdentity> IdentityOfMappedFile(HMODULE module);

} // namespace Kestrany::IdentityServices

#endif
