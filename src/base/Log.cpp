#include "base/Log.h"

#include <iostream>
#include <utility>
#include <vector>

#include "base/ProcessLock.h"
#include "base/StreamEcho.h"

namespace Kestrany::IdentityServices {
namespace {

struct PendingLogRecord
{
    std::shared_ptr<const std::wstring> message;
    LogLevel level;
    std::size_t times;
};

struct LogState
{
    PluginLog pluginLog;
    std::vector<PendingLogRecord> pending;
};

/// Never destroyed: other threads may log while the process ends.
LogState& State()
{
    static LogState& state = *new LogState;
    return state;
}

void Keep(std::vector<PendingLogRecord>& pending, const std::shared_ptr<const std::wstring>& message, LogLevel level)
{
    // One object is one text, so that no texts need to be compared.
    if (!pending.empty() && pending.back().message == message && pending.back().level == level)
        ++pending.back().times;
    else
        pending.push_back({message, level, 1});
}

void Deliver(const std::wstring& message, LogLevel level)
{
    try
    {
        if (State().pluginLog)
            State().pluginLog(message, level);
        else
            EchoLine(std::wcout, message);
    }
    catch (...)
    {
        // The next message may still get through.
    }
}

} // namespace

void DefaultLogFunction(const std::wstring& message, LogLevel level)
{
    try
    {
        LogSharedMessage(std::make_shared<const std::wstring>(message), level);
    }
    catch (...)
    {
        // A message must never cost its writer the step that it reports.
    }
}

void LogSharedMessage(const std::shared_ptr<const std::wstring>& message, LogLevel level)
{
    try
    {
        const ProcessLockGuard guard(processLock);
        LogState& state = State();
        if (state.pluginLog)
        {
            state.pluginLog(*message, level);
            return;
        }
        Keep(state.pending, message, level);
        if (level == TALIXLog::Error)
            EchoLine(std::wcout, *message);
    }
    catch (...)
    {
        // As above.
    }
}

void SetPluginLog(PluginLog target)
{
    const ProcessLockGuard guard(processLock);
    State().pluginLog = std::move(target);
}

void FlushPendingLog()
{
    const ProcessLockGuard guard(processLock);
    // Taken out first: a logger that logs from inside its own operation must not meet the same records again.
    const std::vector<PendingLogRecord> records = std::exchange(State().pending, {});
    for (const PendingLogRecord& record : records)
    {
        for (std::size_t time = 0; time < record.times; ++time)
            Deliver(*record.message, record.level);
    }
}

} // namespace Kestrany::IdentityServices
