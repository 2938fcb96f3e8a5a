#ifndef ORLINDEX_LOAD_HELDFILE_H
#define ORLINDEX_LOAD_HELDFILE_H

#include <string>
#include <windows.h>

#include "base/FileHandle.h"

namespace Kestrany::IdentityServices {

/// A file that nobody can write, replace or rename while the object lives. A link above it may lead elsewhere at any
/// time; its own path has none.
class HeldFile
{
public:
    explicit HeldFile(const std::wstring& path);

    bool IsHeld() const { return error_ == ERROR_SUCCESS; }
    /// Why it is not held.
    DWORD Error() const { return error_; }
    /// By which it is verified and loaded: its own, which is a full path, plain where that means the same. The given
    /// one if it is not held.
    const std::wstring& Path() const { return path_; }
    /// As the platform tells it.
    const std::wstring& OwnPath() const { return ownPath_; }
    const FileHandle& File() const { return file_; }

private:
    FileHandle file_;
    DWORD error_;
    std::wstring path_;
    std::wstring ownPath_;
};

} // namespace Kestrany::IdentityServices

#endif
