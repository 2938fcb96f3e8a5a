#ifndef ORLINDEX_MODULE_LOGCAPTURE_H
#define ORLINDEX_MODULE_LOGCAPTURE_H

#include <string>
#include <vector>

#include "support/PluginControl.h"

namespace OrlindexTest {

/// Receives the library's messages instead of a plugin's logger.
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// The messages since the last call.
    std::vector<LogLine> Take();

private:
    std::vector<LogLine> lines_;
};

LogLine ErrorLine(const std::string& text);
LogLine WarningLine(const std::string& text);
LogLine InfoLine(const std::string& text);

} // namespace OrlindexTest

#endif
