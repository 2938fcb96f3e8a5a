#ifndef AGENT_PLUGIN_LOGGING_H
#define AGENT_PLUGIN_LOGGING_H

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "load/contract/IPluginLogger.h"
#include "platform/LogFile.h"

namespace Kestrany::Agent {

/// Writes one component's messages to the log file.
class PluginLogger final : public IdentityServices::IPluginLogger
{
public:
    PluginLogger(const LogFile& file, std::string component);

    void Reserved0() override {}
    void Reserved1() override {}
    void Reserved2() override {}
    void Reserved3() override {}
    void Reserved4() override {}
    void Reserved5() override {}
    void Reserved6() override {}
    void Reserved7() override {}
    void Reserved8() override {}
    void Reserved9() override {}
    void Log(const wchar_t* message, TALIXLog::LogLevel level) override;

private:
    const LogFile& file_;
    const std::string component_;
};

class PluginLoggerSource final : public IdentityServices::IPluginLoggerSource
{
public:
    explicit PluginLoggerSource(const LogFile& file);

    void Reserved0() override {}
    /// Null for a null name, and while the log file cannot be written: the library then keeps its own logging.
    IdentityServices::IPluginLogger* GetLogger(const wchar_t* name) override;

private:
    const LogFile& file_;
    std::mutex mutex_;
    std::map<std::wstring, std::unique_ptr<PluginLogger>> loggers_;
};

} // namespace Kestrany::Agent

#endif
