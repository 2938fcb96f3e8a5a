#include "platform/WholeFile.h"

#include "platform/Folders.h"
#include "platform/Handle.h"

namespace Kestrany::Simulator {

namespace {

bool WriteNewFile(const std::wstring& path, const std::string& bytes)
{
    const Handle file =
        OwnValid(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    // On the disk before the name changes, or a crash could leave an empty file under the name.
    return file && WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
           written == bytes.size() && FlushFileBuffers(file.get());
}

} // namespace

std::optional<std::string> ReadWholeFile(const std::wstring& path, std::size_t limit)
{
    const Handle file =
        OwnValid(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                             nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file)
        return std::nullopt;
    std::string bytes(limit + 1, '\0');
    DWORD read = 0;
    if (!ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr))
        return std::nullopt;
    if (read > limit)
    {
        SetLastError(ERROR_FILE_TOO_LARGE);
        return std::nullopt;
    }
    bytes.resize(read);
    return bytes;
}

bool ReplaceWholeFile(const std::wstring& path, const std::string& bytes)
{
    CreateFoldersAbove(path);
    const std::wstring next = path + L"." + std::to_wstring(GetCurrentProcessId()) + L".new";
    if (WriteNewFile(next, bytes) &&
        MoveFileExW(next.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        return true;
    const DWORD error = GetLastError();
    DeleteFileW(next.c_str());
    SetLastError(error);
    return false;
}

} // namespace Kestrany::Simulator
