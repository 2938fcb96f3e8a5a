#include "load/LockedFile.h"

#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

// Native functions: GetMappedFileNameW only returns short paths, so the function behind it is called; the other one
// returns a file's index without its volume. Not every user-mode header declares them or their parameters.
extern "C" __declspec(dllimport) LONG NTAPI NtQueryVirtualMemory(HANDLE process, const void* address, int information,
                                                                 void* buffer, SIZE_T size, SIZE_T* needed);
extern "C" __declspec(dllimport) LONG NTAPI NtQueryInformationFile(HANDLE file, void* status, void* buffer, ULONG size,
                                                                   int information);

namespace Kestrany::IdentityServices {
namespace {

constexpr DWORD longestPath = 32768; ///< UTF-16 units, including the terminating zero.

/// The path of an open file in the given form; empty, with the platform's last error, if there is none.
std::wstring FinalPathInForm(const File& file, DWORD form)
{
    std::wstring path(MAX_PATH, L'\0');
    DWORD length = GetFinalPathNameByHandleW(file.Get(), path.data(), MAX_PATH, form);
    if (length >= MAX_PATH && length < longestPath)
    {
        path.resize(longestPath);
        length = GetFinalPathNameByHandleW(file.Get(), path.data(), longestPath, form);
    }
    if (length >= path.size())
    {
        SetLastError(ERROR_FILENAME_EXCED_RANGE);
        length = 0;
    }
    path.resize(length);
    return path;
}

struct FinalPath
{
    std::wstring path; ///< With the literal-path prefix.
    DWORD error = ERROR_SUCCESS;
};

FinalPath FinalPathOf(const File& file)
{
    FinalPath result;
    // Some file servers do not support normalized names; the opened name is free of links, too. Some volumes have no
    // drive letter.
    for (const DWORD form : {FILE_NAME_NORMALIZED | VOLUME_NAME_DOS, FILE_NAME_OPENED | VOLUME_NAME_DOS,
                             FILE_NAME_NORMALIZED | VOLUME_NAME_GUID})
    {
        result.path = FinalPathInForm(file, form);
        result.error = result.path.empty() ? GetLastError() : ERROR_SUCCESS;
        if (!result.path.empty())
            break;
    }
    return result;
}

bool StartsWith(std::wstring_view text, std::wstring_view start)
{
    return text.substr(0, start.size()) == start;
}

/// Whether the platform uses a path unchanged: it strips trailing dots, and maps device names.
bool IsUsedUnchanged(const std::wstring& path)
{
    std::wstring full(path.size() + 1, L'\0');
    const DWORD length = GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    return length == path.size() && StartsWith(full, path);
}

/// Removes the literal-path prefix if the path means the same file without it: loaders and trust providers expect plain
/// paths. A plain path of MAX_PATH or more is used only if the caller gave that same path.
std::wstring PlainPath(const std::wstring& path, const std::wstring& given)
{
    constexpr std::wstring_view literal = L"\\\\?\\";
    constexpr std::wstring_view literalShare = L"\\\\?\\UNC\\";
    if (!StartsWith(path, literal))
        return path;
    const std::wstring plain =
        // not covered: Branches of the compiler; paths of shares and of drives are tested.
        StartsWith(path, literalShare) ? L"\\\\" + path.substr(literalShare.size()) : path.substr(literal.size());
    return (plain.size() < MAX_PATH || plain == given) && IsUsedUnchanged(plain) ? plain : path;
}

// Information classes of the two native functions.
constexpr int mappedFileName = 2;
constexpr int fileIndex = 6;

/// UNICODE_STRING.
struct SystemString
{
    USHORT bytes;
    USHORT capacity;
    wchar_t* text;
};

/// IO_STATUS_BLOCK.
struct SystemStatus
{
    void* status;
    ULONG_PTR information;
};

/// Converts a name of the object manager, such as \Device\HarddiskVolume2\folder\file or \??\C:\folder\file, to a path
/// that can be opened.
std::wstring PathOfObjectName(const std::wstring& name)
{
    constexpr wchar_t drives[] = L"\\??\\";
    constexpr std::size_t length = std::size(drives) - 1;
    // not covered: Windows returns volume names, Wine drive names; the tests run on one of them.
    return name.compare(0, length, drives) == 0 ? L"\\\\?\\" + name.substr(length) : L"\\\\?\\GLOBALROOT" + name;
}

std::wstring MappedFilePath(HMODULE module)
{
    struct MappedName
    {
        SystemString name = {};
        wchar_t text[longestPath]; // Not initialized: the system fills what it needs.
    };
    const std::unique_ptr<MappedName> mapped(new MappedName);
    if (NtQueryVirtualMemory(GetCurrentProcess(), module, mappedFileName, mapped.get(), sizeof *mapped, nullptr) < 0)
        return {};
    const std::wstring name(mapped->name.text, mapped->name.bytes / sizeof(wchar_t));
    return name.empty() ? name : PathOfObjectName(name);
}

std::optional<std::int64_t> IndexOf(const File& file)
{
    std::int64_t index = 0;
    SystemStatus status = {};
    if (!file.IsOpen() || NtQueryInformationFile(file.Get(), &status, &index, sizeof index, fileIndex) < 0)
        return std::nullopt;
    return index;
}

std::optional<DWORD> VolumeOf(const File& file)
{
    BY_HANDLE_FILE_INFORMATION information = {};
    if (!GetFileInformationByHandle(file.Get(), &information))
        return std::nullopt;
    return information.dwVolumeSerialNumber;
}

} // namespace

LockedFile::LockedFile(const std::wstring& path) : file_(path, FILE_SHARE_READ), error_(file_.Error()), path_(path)
{
    if (!file_.IsOpen())
        return;
    FinalPath result = FinalPathOf(file_);
    finalPath_ = std::move(result.path);
    error_ = result.error;
    if (IsLocked())
        path_ = PlainPath(finalPath_, path);
}

bool LockedFile::IsSourceOf(HMODULE module) const
{
    const std::wstring path = MappedFilePath(module);
    if (path.empty())
        return false;
    const File mapped(path, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE);
    const std::optional<std::int64_t> index = IndexOf(file_);
    return index && index == IndexOf(mapped) && IsOnVolumeOf(mapped);
}

/// Compares the final paths first: they begin with the volume, and take far less time than reading the volume's serial
/// number.
bool LockedFile::IsOnVolumeOf(const File& mapped) const
{
    if (FinalPathOf(mapped).path == finalPath_)
        return true;
    const std::optional<DWORD> volume = VolumeOf(file_);
    return volume && volume == VolumeOf(mapped);
}

} // namespace Kestrany::IdentityServices
