#ifndef ORLINDEX_LOAD_LOCKEDFILE_H
#define ORLINDEX_LOAD_LOCKEDFILE_H

#include <string>
#include <windows.h>

#include "base/Files.h"

namespace Kestrany::IdentityServices {

/// Locks a file while the object exists: no process can write, replace or rename it. The file is verified and loaded by
/// its final path, because a link in the configured path may lead to another file at any time.
class LockedFile
{
public:
    explicit LockedFile(const std::wstring& path);

    bool IsLocked() const { return error_ == ERROR_SUCCESS; }
    /// The platform's error code if the file is not locked.
    DWORD Error() const { return error_; }
    /// The final path: a full path without links. The literal-path prefix is removed if the path means the same file
    /// without it. The given path if the file is not locked.
    const std::wstring& Path() const { return path_; }

    /// Whether a loaded module was mapped from this file: the same file index on the same volume. False if the platform
    /// cannot report them. Compares the mapping, not the path that the module was loaded by, which may lead to another
    /// file by now.
    bool IsSourceOf(HMODULE module) const;

private:
    bool IsOnVolumeOf(const File& mapped) const;

    File file_;
    DWORD error_;
    std::wstring path_;
    std::wstring finalPath_; ///< As the platform returns it.
};

} // namespace Kestrany::IdentityServices

#endif
