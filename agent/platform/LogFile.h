#ifndef AGENT_PLATFORM_LOGFILE_H
#define AGENT_PLATFORM_LOGFILE_H

#include <cstdint>
#include <functional>
#include <string>

#include "base/LogLevel.h"
#include "platform/Base.h"

namespace Kestrany::Agent {

/// Receives the messages of a process.
using LogSink = std::function<void(TALIXLog::LogLevel, const std::string&)>;

/// The log file of all processes of the agent; empty if the user has no local application data.
std::wstring DefaultLogFile();

/// A UTF-8 text file to which several processes append whole lines. A file that has reached its limit is renamed to the
/// old file, which it replaces. Any thread may call.
class LogFile
{
public:
    static constexpr std::uint64_t DefaultLimit = 4 * 1024 * 1024;

    /// Creates the file and the folders above it if they do not exist. On failure the object discards what is written.
    /// `limit`: bytes of one file.
    explicit LogFile(const std::wstring& path, std::uint64_t limit = DefaultLimit);

    bool IsOpen() const { return mutex_ != nullptr; }
    /// Appends a message of a component. Its second line and further ones are indented.
    void Write(const std::string& component, TALIXLog::LogLevel level, const std::string& message) const;

    /// The path of the old file: "Name.old.log" for "Name.log".
    static std::wstring OldFile(const std::wstring& path);

private:
    Handle OpenForAppending() const;

    const std::wstring path_;
    const std::uint64_t limit_;
    Handle mutex_; ///< Of all processes that write to the file; null if it cannot be written.
};

} // namespace Kestrany::Agent

#endif
