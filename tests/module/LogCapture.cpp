#include "LogCapture.h"

#include <utility>

#include "base/Log.h"
#include "support/Text.h"

namespace OrlindexTest {

namespace TALIXLog = Kestrany::TALIXLog;
using Kestrany::IdentityServices::SetPluginLogger;

LogCapture::LogCapture()
{
    SetPluginLogger(
        [this](const std::wstring& message, TALIXLog::LogLevel level) { lines_.push_back({level, ToUtf8(message)}); });
}

LogCapture::~LogCapture()
{
    SetPluginLogger(nullptr);
}

std::vector<LogLine> LogCapture::Take()
{
    return std::exchange(lines_, {});
}

LogLine ErrorLine(const std::string& text)
{
    return {TALIXLog::Error, text};
}

LogLine WarningLine(const std::string& text)
{
    return {TALIXLog::Warning, text};
}

LogLine InfoLine(const std::string& text)
{
    return {TALIXLog::Info, text};
}

} // namespace OrlindexTest
