#include "platform/AtomicFile.h"

#include <iterator>
#include <memory>

#include "platform/Base.h"
#include "platform/Folders.h"

namespace Kestrany::Agent {

namespace {

constexpr wchar_t TemporaryEnd[] = L".new";

struct SearchCloser
{
    void operator()(void* search) const { FindClose(search); }
};

/// The process that created the temporary file of this name; 0 for any other name.
DWORD WriterOf(const std::wstring& name)
{
    const std::size_t end = name.rfind(TemporaryEnd);
    const std::size_t start = end == std::wstring::npos || end == 0 ? end : name.rfind(L'.', end - 1);
    if (start == std::wstring::npos || end + std::size(TemporaryEnd) - 1 != name.size())
        return 0;
    const std::wstring number = name.substr(start + 1, end - start - 1);
    constexpr std::size_t mostDigits = 10;
    if (number.empty() || number.size() > mostDigits || number.find_first_not_of(L"0123456789") != std::wstring::npos)
        return 0;
    return static_cast<DWORD>(std::stoull(number));
}

bool HasEnded(DWORD processId)
{
    const Handle process(OpenProcess(SYNCHRONIZE, FALSE, processId));
    return process ? WaitForSingleObject(process.get(), 0) == WAIT_OBJECT_0 : GetLastError() == ERROR_INVALID_PARAMETER;
}

bool WriteNewFile(const std::wstring& path, const std::string& bytes)
{
    const Handle file =
        OwnFile(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    // Flushed before the file is renamed: a crash could otherwise leave an empty file under the final name.
    return file && WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) &&
           written == bytes.size() && FlushFileBuffers(file.get());
}

} // namespace

bool IsMissingFile(unsigned long error)
{
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

bool ReplaceFileAtomically(const std::wstring& path, const std::string& bytes)
{
    const std::wstring next = path + L"." + std::to_wstring(GetCurrentProcessId()) + TemporaryEnd;
    bool isWritten = WriteNewFile(next, bytes);
    // Not before: the folders are nearly always there, and each one takes a call.
    if (!isWritten && GetLastError() == ERROR_PATH_NOT_FOUND)
    {
        CreateFoldersAbove(path);
        isWritten = WriteNewFile(next, bytes);
    }
    if (isWritten && MoveFileExW(next.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        return true;
    const DWORD error = GetLastError();
    DeleteFileW(next.c_str());
    SetLastError(error);
    return false;
}

void RemoveUnfinishedFiles(const std::wstring& folder)
{
    WIN32_FIND_DATAW found{};
    const HANDLE first = FindFirstFileW((folder + L"\\*" + TemporaryEnd).c_str(), &found);
    if (first == INVALID_HANDLE_VALUE)
        return;
    const std::unique_ptr<void, SearchCloser> search(first);
    do
    {
        const DWORD writer = WriterOf(found.cFileName);
        if (writer != 0 && HasEnded(writer))
            DeleteFileW((folder + L"\\" + found.cFileName).c_str());
    }
    while (FindNextFileW(search.get(), &found));
}

} // namespace Kestrany::Agent
