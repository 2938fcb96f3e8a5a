#include "platform/LogFile.h"

#include <cstdio>

#include "platform/Folders.h"

namespace Kestrany::Agent {

namespace {

std::string TimeStamp()
{
    SYSTEMTIME now;
    GetSystemTime(&now);
    char text[32];
    std::snprintf(text, sizeof text, "%04u-%02u-%02uT%02u:%02u:%02u.%03uZ", now.wYear, now.wMonth, now.wDay, now.wHour,
                  now.wMinute, now.wSecond, now.wMilliseconds);
    return text;
}

std::string LevelName(TALIXLog::LogLevel level)
{
    switch (level)
    {
    case TALIXLog::Error:
        return "Error";
    case TALIXLog::Warning:
        return "Warning";
    case TALIXLog::Info:
        return "Info";
    }
    return "Level " + std::to_string(static_cast<int>(level));
}

std::string Indented(const std::string& message)
{
    std::string text;
    for (const char character : message)
    {
        if (character == '\r')
            continue;
        text += character;
        if (character == '\n')
            text += "    ";
    }
    text.erase(text.find_last_not_of(" \n") + 1);
    return text;
}

/// Milliseconds that a line waits for the mutex: longer than other lines take, unless their process is suspended.
constexpr DWORD LockLimit = 2000;

/// The same name in every process that writes to the file, whatever the case of its path.
std::wstring MutexName(const std::wstring& path)
{
    std::wstring name = path;
    CharUpperBuffW(name.data(), static_cast<DWORD>(name.size()));
    std::uint64_t hash = 14695981039346656037u; // FNV-1a. The name is no secret.
    for (const wchar_t character : name)
        hash = (hash ^ character) * 1099511628211u;
    return L"Local\\Kestrany.TALIX.Log." + std::to_wstring(hash);
}

class MutexLock
{
public:
    explicit MutexLock(HANDLE mutex) : mutex_(mutex)
    {
        const DWORD result = WaitForSingleObject(mutex_, LockLimit);
        held_ = result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
    }
    ~MutexLock()
    {
        if (held_)
            ReleaseMutex(mutex_);
    }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

    bool IsHeld() const { return held_; }

private:
    HANDLE mutex_;
    bool held_ = false;
};

} // namespace

std::wstring DefaultLogFile()
{
    const std::wstring folder = DataFolder();
    return folder.empty() ? folder : folder + L"\\Log\\IdServices.log";
}

LogFile::LogFile(const std::wstring& path, std::uint64_t limit) : path_(path), limit_(limit)
{
    if (path.empty())
        return;
    CreateFoldersAbove(path);
    if (OpenForAppending())
        mutex_.reset(CreateMutexW(nullptr, FALSE, MutexName(path).c_str()));
}

void LogFile::Write(const std::string& component, TALIXLog::LogLevel level, const std::string& message) const
{
    if (!mutex_)
        return;
    const std::string line = TimeStamp() + " simulator[" + std::to_string(GetCurrentProcessId()) + "] " +
                             LevelName(level) + " " + component + ": " + Indented(message) + "\r\n";
    const MutexLock lock(mutex_.get());
    Handle file = OpenForAppending();
    LARGE_INTEGER size{};
    // Without the mutex the line is written, but the files are not renamed.
    if (lock.IsHeld() && file && GetFileSizeEx(file.get(), &size) && size.QuadPart > 0 &&
        static_cast<std::uint64_t>(size.QuadPart) + line.size() > limit_)
    {
        file.reset();
        MoveFileExW(path_.c_str(), OldFile(path_).c_str(), MOVEFILE_REPLACE_EXISTING);
        file = OpenForAppending();
    }
    DWORD written = 0;
    if (file)
        WriteFile(file.get(), line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
}

std::wstring LogFile::OldFile(const std::wstring& path)
{
    const std::size_t name = path.find_last_of(L"\\/") + 1;
    const std::size_t extension = path.rfind(L'.');
    if (extension == std::wstring::npos || extension <= name)
        return path + L".old";
    return path.substr(0, extension) + L".old" + path.substr(extension);
}

Handle LogFile::OpenForAppending() const
{
    // With the right to append alone, each WriteFile appends its bytes as one piece.
    return OwnFile(CreateFileW(path_.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                               nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
}

} // namespace Kestrany::Agent
