#include "load/FileIdentity.h"

#include <iterator>
#include <string>

#include <psapi.h>

namespace Kestrany::IdentityServices {
namespace {

constexpr DWORD longestPath = 32768; ///< UTF-16 units, with the zero.

/// A name of the object manager, such as \Device\HarddiskVolume2\folder\file or \??\C:\folder\file, as a path that a
/// file can be opened by.
std::wstring PathOfObjectName(const std::wstring& name)
{
    constexpr wchar_t drives[] = L"\\??\\";
    constexpr std::size_t length = std::size(drives) - 1;
    return name.compare(0, length, drives) == 0 ? L"\\\\?\\" + name.substr(length) : L"\\\\?\\GLOBALROOT" + name;
}

std::wstring MappedFilePath(HMODULE module)
{
    std::wstring name(longestPath, L'\0');
    name.resize(GetMappedFileNameW(GetCurrentProcess(), module, name.data(), longestPath));
    return name.empty() ? name : PathOfObjectName(name);
}

} // namespace

std::optional<FileIdentity> IdentityOf(const FileHandle& file)
{
    BY_HANDLE_FILE_INFORMATION information = {};
    if (!file.IsOpen() || !GetFileInformationByHandle(file.Get(), &information))
        return std::nullopt;
    return FileIdentity{information.dwVolumeSerialNumber,
                        std::uint64_t{information.nFileIndexHigh} << 32 | information.nFileIndexLow};
}

std::optional<FileIdentity> IdentityOfMappedFile(HMODULE module)
{
    const std::wstring path = MappedFilePath(module);
    if (path.empty())
        return std::nullopt;
    return IdentityOf(FileHandle(path, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE));
}

} // namespace Kestrany::IdentityServices
