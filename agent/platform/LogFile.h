#ifndef AGENT_PLATFORM_LOGFILE_H
#define AGENT_PLATFORM_LOGFILE_H

#include <cstdint>
#include <functional>
#include <string>

#include "base/LogLevel.h"
#include "platform/Handle.h"

namespace Kestrany::Agent {

/// Receives the messages of a process.
using LogSink = std::function<void(TALIXLog::LogLevel, const std::string&)>;

/// The log file of all processes of the agent; empty if the user has no local application data.
std::wstring DefaultLogFile();

/// A UTF-8 text file to which several processes append whole lines. A file that has grown to its limit becomes the old
/// one, in the place of the old one before, and a new one begins. Any thread may call.
class LogFile
{
public:
    static constexpr std::uint64_t DefaultLimit = 4 * 1024 * 1024;

    /// Creates the file and the folders above it, where there are none. Without success the object drops what is
    /// written. `limit`: bytes of one file.
    explicit LogFile(const std::wstring& path, std::uint64_t limit = DefaultLimit);

    bool IsOpen() const { return turn_ != nullptr; }
    /// Appends one message of a component. Further lines of the message are indented.
    void Write(const std::string& component, TALIXLog::LogLevel level, const std::string& message) const;

    /// The path of the old file: "Name.old.log" for "Name.log".
    static std::wstring OldFile(const std::wstring& path);

private:
    Handle OpenForAppending() const;

    const std::wstring path_;
    const std::uint64_t limit_;
    Handle turn_; ///< Mutex of all processes that write to the file; null when it cannot be written.
};

} // namespace Kestrany::Agent

#endif
