#include "load/FileIdentity.h"

#include <iterator>
#include <memory>
#include <string>

#include <winternl.h>

/// The system's own question behind GetMappedFileNameW, which has room for a short path only. In no header of user
/// mode.
extern "C" __declspec(dllimport) LONG NTAPI NtQueryVirtualMemory(HANDLE process, const void* address, int information,
                                                                 void* buffer, SIZE_T size, SIZE_T* needed);

namespace Kestrany::IdentityServices {
namespace {

constexpr DWORD longestPath = 32768; ///< UTF-16 units, with the zero.
constexpr int mappedFileName = 2;    ///< The question's number.

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
    struct MappedName
    {
        UNICODE_STRING name;
        wchar_t text[longestPath];
    };
    const auto mapped = std::make_unique<MappedName>();
    if (NtQueryVirtualMemory(GetCurrentProcess(), module, mappedFileName, mapped.get(), sizeof *mapped, nullptr) < 0)
        return {};
    const std::wstring name(mapped->name.Buffer, mapped->name.Length / sizeof(wchar_t));
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
