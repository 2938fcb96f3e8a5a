#ifndef SIMULATOR_PLATFORM_LOGFILE_H
#define SIMULATOR_PLATFORM_LOGFILE_H

#include <string>

#include "base/LogLevel.h"
#include "platform/Handle.h"

namespace Kestrany::Simulator {

/// Where the simulator's processes write their messages; empty when the user has no local application data.
std::wstring DefaultLogFile();

/// A UTF-8 text file to which several processes append whole lines. Any thread may call.
class LogFile
{
public:
    /// Opens or creates the file and the folders above it. Without success the object drops what is written.
    explicit LogFile(const std::wstring& path);

    bool IsOpen() const { return file_ != nullptr; }
    /// Appends one message of a component. Further lines of the message are indented.
    void Write(const std::string& component, TALIXLog::LogLevel level, const std::string& message) const;

private:
    Handle file_;
};

} // namespace Kestrany::Simulator

#endif
