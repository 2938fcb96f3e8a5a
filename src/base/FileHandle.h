#ifndef ORLINDEX_BASE_FILEHANDLE_H
#define ORLINDEX_BASE_FILEHANDLE_H

#include <string>
#include <windows.h>

namespace Kestrany::IdentityServices {

/// A file that is open for reading. `sharing` (FILE_SHARE_...) is what others may do with it meanwhile.
class FileHandle
{
public:
    FileHandle(const std::wstring& path, DWORD sharing)
        : handle_(
              CreateFileW(path.c_str(), GENERIC_READ, sharing, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)),
          error_(IsOpen() ? ERROR_SUCCESS : GetLastError())
    {
    }
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;
    ~FileHandle()
    {
        if (IsOpen())
            CloseHandle(handle_);
    }

    bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
    /// Why it is not open.
    DWORD Error() const { return error_; }
    HANDLE Get() const { return handle_; }

private:
    HANDLE handle_;
    DWORD error_;
};

} // namespace Kestrany::IdentityServices

#endif
