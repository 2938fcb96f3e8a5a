#include "base/Log.h"

#include <iostream>
#include <utility>
#include <vector>

#include "base/ProcessLock.h"
#include "base/StreamEcho.h"

namespace Kestrany::IdentityServices {
namespace {

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

} // namespace

void DefaultLogFunction(const std::wstring& message, LogLevel level)
{
    try
    {
        const ProcessLockGuard guard(processLock);
        LogState& state = State();
        if (state.pluginLog)
        {
            state.pluginLog(message, level);
            return;
        }
        state.pending.push_back({message, level});
        if (level == TALIXLog::Error)
            EchoLine(std::wcout, message);
    }
    catch (...)
    {
        // A message must never cost its writer the step that it reports.
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
        try
        {
            if (State().pluginLog)
                State().pluginLog(record.message, record.level);
            else
                EchoLine(std::wcout, record.message);
        }
        catch (...)
        {
            // The next record may still get through.
        }
    }
}

} // namespace Kestrany::IdentityServices
