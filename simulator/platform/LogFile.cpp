#include "platform/LogFile.h"

#include <cstdio>

#include "platform/Folders.h"

namespace Kestrany::Simulator {

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

} // namespace

std::wstring DefaultLogFile()
{
    const std::wstring folder = DataFolder();
    return folder.empty() ? folder : folder + L"\\Log\\IdServices.log";
}

LogFile::LogFile(const std::wstring& path)
{
    if (path.empty())
        return;
    CreateFoldersAbove(path);
    // The right to append, and no other right to write, makes each WriteFile land at the end as one piece.
    file_ = OwnValid(CreateFileW(path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                 nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
}

void LogFile::Write(const std::string& component, TALIXLog::LogLevel level, const std::string& message) const
{
    if (!file_)
        return;
    const std::string line = TimeStamp() + " simulator[" + std::to_string(GetCurrentProcessId()) + "] " +
                             LevelName(level) + " " + component + ": " + Indented(message) + "\r\n";
    DWORD written = 0;
    WriteFile(file_.get(), line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
}

} // namespace Kestrany::Simulator
