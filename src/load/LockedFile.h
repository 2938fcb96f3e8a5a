#ifndef ORLINDEX_LOAD_LOCKEDFILE_H
#define ORLINDEX_LOAD_LOCKEDFILE_H

#include <string>
#include <windows.h>

#include "base/Files.h"

namespace Kestrany::IdentityServices {

/// A file that nobody can write, replace or rename while the object lives. It is verified and loaded by its final path:
/// a link in the configured path may lead to another file at any time.
class LockedFile
{
public:
    explicit LockedFile(const std::wstring& path);

    bool IsLocked() const { return error_ == ERROR_SUCCESS; }
    /// The platform's error code if the file is not locked.
    DWORD Error() const { return error_; }
    /// The final path, which is a full path without links; without the prefix of literal paths if it means the same
    /// without it. The given path if the file is not locked.
    const std::wstring& Path() const { return path_; }

    /// Whether a loaded module was mapped from this file: the same file index on the same volume. False if the platform
    /// does not say. The mapping is asked, not the path that the module was loaded by, which may lead elsewhere by now.
    bool IsSourceOf(HMODULE module) const;

private:
    bool IsOnVolumeOf(const File& mapped) const;

    File file_;
    DWORD error_;
    std::wstring path_;
    std::wstring finalPath_; ///< As the platform gives it.
};

} // namespace Kestrany::IdentityServices

#endif
