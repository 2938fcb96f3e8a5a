#include "plugin/Logging.h"

#include <utility>

#include "platform/Base.h"
#include "plugin/NoThrow.h"

namespace Kestrany::Agent {

PluginLogger::PluginLogger(const LogFile& file, std::string component) : file_(file), component_(std::move(component))
{
}

void PluginLogger::Log(const wchar_t* message, TALIXLog::LogLevel level)
{
    NoThrow([&] { file_.Write(component_, level, message == nullptr ? std::string() : Narrow(message)); });
}

PluginLoggerSource::PluginLoggerSource(const LogFile& file) : file_(file) {}

IdentityServices::IPluginLogger* PluginLoggerSource::GetLogger(const wchar_t* name)
{
    IdentityServices::IPluginLogger* const none = nullptr;
    return NoThrow(none, [&]() -> IdentityServices::IPluginLogger* {
        if (name == nullptr || !file_.IsOpen())
            return nullptr;
        const std::lock_guard lock(mutex_);
        std::unique_ptr<PluginLogger>& logger = loggers_[name];
        if (!logger)
            logger = std::make_unique<PluginLogger>(file_, Narrow(name));
        return logger.get();
    });
}

} // namespace Kestrany::Agent
