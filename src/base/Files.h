#ifndef ORLINDEX_BASE_FILES_H
#define ORLINDEX_BASE_FILES_H

#include <string>
#include <windows.h>

#include "base/Handles.h"

namespace Kestrany::IdentityServices {

/// A file that is open for reading.
class File
{
public:
    /// `sharing` (FILE_SHARE_...) is what others may do with the file meanwhile.
    File(const std::wstring& path, DWORD sharing);

    bool IsOpen() const { return handle_ != nullptr; }
    /// The platform's error code if the file is not open.
    DWORD Error() const { return error_; }
    HANDLE Get() const { return handle_.get(); }

private:
    Handle handle_;
    DWORD error_;
};

/// Largest configuration file that is read, in bytes. Such files have a few hundred; a parsed document takes up to a
/// hundred times its text, and that memory is the host's.
inline constexpr unsigned long long LargestConfigFile = 8ull * 1024 * 1024;

/// What reading a file came to.
struct FileContents
{
    DWORD error = ERROR_SUCCESS; ///< The platform's; ERROR_FILE_TOO_LARGE for a file above the limit.
    std::string bytes;           ///< Empty if there is an error.

    bool IsRead() const { return error == ERROR_SUCCESS; }
};

/// Reads a whole file of at most `limit` bytes, whatever other processes do with it. What is no file on a disk (a
/// directory, a pipe, a console) is an error.
FileContents ReadFileContents(const std::wstring& path, unsigned long long limit = LargestConfigFile);

} // namespace Kestrany::IdentityServices

#endif
