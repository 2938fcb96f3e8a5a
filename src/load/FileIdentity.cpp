#include "load/FileIdentity.h"

#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <string>

#include "load/OwnPath.h"

// Questions to the system itself: the one behind GetMappedFileNameW, which has room for a short path only, and the one
// for a file's index without its volume. What they take is in no header of user mode, or not in each.
extern "C" __declspec(dllimport) LONG NTAPI NtQueryVirtualMemory(HANDLE process, const void* address, int information,
                                                                 void* buffer, SIZE_T size, SIZE_T* needed);
extern "C" __declspec(dllimport) LONG NTAPI NtQueryInformationFile(HANDLE file, void* status, void* buffer, ULONG size,
                                                                   int information);

namespace Kestrany::IdentityServices {
namespace {

constexpr DWORD longestPath = 32768; ///< UTF-16 units, with the zero.

// The numbers of the questions.
constexpr int mappedFileName = 2;
constexpr int fileIndex = 6;

/// A text of the system's: UNICODE_STRING.
struct SystemString
{
    USHORT bytes;
    USHORT capacity;
    wchar_t* text;
};

/// How a question ended, which its answer says too: IO_STATUS_BLOCK.
struct SystemStatus
{
    void* status;
    ULONG_PTR information;
};

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
        SystemString name = {};
        wchar_t text[longestPath]; // Left as it is: the system fills what it needs.
    };
    const std::unique_ptr<MappedName> mapped(new MappedName);
    if (NtQueryVirtualMemory(GetCurrentProcess(), module, mappedFileName, mapped.get(), sizeof *mapped, nullptr) < 0)
        return {};
    const std::wstring name(mapped->name.text, mapped->name.bytes / sizeof(wchar_t));
    return name.empty() ? name : PathOfObjectName(name);
}

std::optional<std::int64_t> IndexOf(const FileHandle& file)
{
    std::int64_t index = 0;
    SystemStatus status = {};
    if (!file.IsOpen() || NtQueryInformationFile(file.Get(), &status, &index, sizeof index, fileIndex) < 0)
        return std::nullopt;
    return index;
}

std::optional<DWORD> VolumeOf(const FileHandle& file)
{
    BY_HANDLE_FILE_INFORMATION information = {};
    if (!GetFileInformationByHandle(file.Get(), &information))
        return std::nullopt;
    return information.dwVolumeSerialNumber;
}

/// A file's own path begins with its volume, and is asked for in a small part of the time of the volume's number.
bool AreOnSameVolume(const HeldFile& held, const FileHandle& mapped)
{
    DWORD error = ERROR_SUCCESS;
    if (OwnPathOf(mapped, error) == held.OwnPath())
        return true;
    const std::optional<DWORD> volume = VolumeOf(held.File());
    return volume && volume == VolumeOf(mapped);
}

} // namespace

bool IsMappedFrom(HMODULE module, const HeldFile& held)
{
    const std::wstring path = MappedFilePath(module);
    if (path.empty())
        return false;
    const FileHandle mapped(path, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE);
    const std::optional<std::int64_t> index = IndexOf(held.File());
    return index && index == IndexOf(mapped) && AreOnSameVolume(held, mapped);
}

} // namespace Kestrany::IdentityServices
