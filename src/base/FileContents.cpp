#include "base/FileContents.h"

#include "base/FileHandle.h"

namespace Kestrany::IdentityServices {

namespace {

/// The file's bytes, or why there are none.
DWORD ReadAll(const FileHandle& file, std::string& contents)
{
    LARGE_INTEGER size = {};
    if (!file.IsOpen())
        return file.Error();
    if (GetFileType(file.Get()) != FILE_TYPE_DISK)
        return ERROR_BAD_FILE_TYPE; // A pipe or a console may never come to an end.
    if (!GetFileSizeEx(file.Get(), &size))
        return GetLastError();
    if (static_cast<unsigned long long>(size.QuadPart) > LargestFile)
        return ERROR_FILE_TOO_LARGE;
    contents.resize(static_cast<std::size_t>(size.QuadPart));
    DWORD read = 0;
    if (!ReadFile(file.Get(), contents.data(), static_cast<DWORD>(contents.size()), &read, nullptr))
        return GetLastError();
    contents.resize(read);
    return ERROR_SUCCESS;
}

} // namespace

std::optional<std::string> ReadFileContents(const std::wstring& path, DWORD* error)
{
    std::string contents;
    const DWORD status = ReadAll(FileHandle(path, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE), contents);
    if (error)
        *error = status;
    if (status != ERROR_SUCCESS)
        return std::nullopt;
    return contents;
}

} // namespace Kestrany::IdentityServices
