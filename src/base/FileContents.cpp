#include "base/FileContents.h"

#include "base/FileHandle.h"

namespace Kestrany::IdentityServices {

namespace {

constexpr DWORD portion = 16 * 1024; ///< Bytes. The files of most installations fit into one.

/// The file's bytes to its end, however long it was when it was opened, or why there are none.
DWORD ReadAll(const FileHandle& file, std::string& contents)
{
    if (!file.IsOpen())
        return file.Error();
    if (GetFileType(file.Get()) != FILE_TYPE_DISK)
        return ERROR_BAD_FILE_TYPE; // A pipe or a console may never come to an end.
    for (DWORD read = portion; read > 0;)
    {
        const std::size_t before = contents.size();
        contents.resize(before + portion);
        if (!ReadFile(file.Get(), &contents[before], portion, &read, nullptr))
            return GetLastError();
        contents.resize(before + read);
        if (contents.size() > LargestFile)
            return ERROR_FILE_TOO_LARGE;
    }
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
