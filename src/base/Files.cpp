#include "base/Files.h"

namespace Kestrany::IdentityServices {

namespace {

DWORD ReadAll(const File& file, unsigned long long limit, std::string& bytes)
{
    LARGE_INTEGER size = {};
    if (!file.IsOpen())
        return file.Error();
    if (GetFileType(file.Get()) != FILE_TYPE_DISK)
        return ERROR_BAD_FILE_TYPE; // A pipe or a console may never come to an end.
    if (!GetFileSizeEx(file.Get(), &size))
        return GetLastError();
    if (static_cast<unsigned long long>(size.QuadPart) > limit)
        return ERROR_FILE_TOO_LARGE;
    bytes.resize(static_cast<std::size_t>(size.QuadPart));
    DWORD read = 0;
    if (!ReadFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr))
        return GetLastError();
    bytes.resize(read);
    return ERROR_SUCCESS;
}

} // namespace

File::File(const std::wstring& path, DWORD sharing)
    : handle_(OwnFile(
          CreateFileW(path.c_str(), GENERIC_READ, sharing, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr))),
      error_(IsOpen() ? ERROR_SUCCESS : GetLastError())
{
}

FileContents ReadFileContents(const std::wstring& path, unsigned long long limit)
{
    FileContents contents;
    contents.error = ReadAll(File(path, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE), limit, contents.bytes);
    if (!contents.IsRead())
        contents.bytes.clear();
    return contents;
}

} // namespace Kestrany::IdentityServices
