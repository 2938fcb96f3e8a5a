#ifndef ORLINDEX_CONTRACT_IPLUGINLOGGER_H
#define ORLINDEX_CONTRACT_IPLUGINLOGGER_H

#include "base/LogLevel.h"

namespace Kestrany::IdentityServices {

/// The plugin's logger. Slots 0 to 9 are the plugin's own.
class IPluginLogger
{
public:
    virtual void Reserved0() = 0;
    virtual void Reserved1() = 0;
    virtual void Reserved2() = 0;
    virtual void Reserved3() = 0;
    virtual void Reserved4() = 0;
    virtual void Reserved5() = 0;
    virtual void Reserved6() = 0;
    virtual void Reserved7() = 0;
    virtual void Reserved8() = 0;
    virtual void Reserved9() = 0;
    /// Slot 10. `message` is UTF-16 with a terminating zero and belongs to the caller. Called on any thread, while the
    /// library holds its lock: it must not call the library, nor wait for a thread that does.
    virtual void Log(const wchar_t* message, TALIXLog::LogLevel level) = 0;

protected:
    ~IPluginLogger() = default;
};

/// Provides loggers by the name of the component that writes to them.
class IPluginLoggerSource
{
public:
    virtual void Reserved0() = 0;
    /// Slot 1. The logger stays valid while the plugin is loaded in the process; null if there is none for `name`.
    virtual IPluginLogger* GetLogger(const wchar_t* name) = 0;

protected:
    ~IPluginLoggerSource() = default;
};

} // namespace Kestrany::IdentityServices

#endif
