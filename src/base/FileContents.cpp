#include "base/FileContents.h"

#include "base/FileHandle.h"

namespace Kestrany::IdentityServices {

std::optional<std::string> ReadFileContents(const std::wstring& path)
{
    const FileHandle file(path, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE);
    LARGE_INTEGER size = {};
    if (!file.IsOpen() || !GetFileSizeEx(file.Get(), &size) ||
        static_cast<unsigned long long>(size.QuadPart) > LargestFile)
        return std::nullopt;

    std::string contents(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD read = 0;
    if (!ReadFile(file.Get(), contents.data(), static_cast<DWORD>(contents.size()), &read, nullptr))
        return std::nullopt;
    contents.resize(read);
    return contents;
}

} // namespace Kestrany::IdentityServices
