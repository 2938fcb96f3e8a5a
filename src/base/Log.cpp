#include "base/Log.h"

#include <iostream>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "base/ConsoleStream.h"
#include "base/ProcessLock.h"

namespace Kestrany::IdentityServices {
namespace {

using SharedText = std::shared_ptr<const std::wstring>;

struct PendingLogRecord
{
    SharedText message;
    LogLevel level;
    std::size_t times;
};

/// Messages that wait for a logger. A text is stored once, however often it was logged: a hostile file can cause the
/// same few messages a million times.
struct PendingLog
{
    struct ByText
    {
        using is_transparent = void;
        static std::wstring_view Text(std::wstring_view text) { return text; }
        static std::wstring_view Text(const SharedText& text) { return *text; }

        template <class Left, class Right>
        bool operator()(const Left& left, const Right& right) const
        {
            return Text(left) < Text(right);
        }
    };

    std::vector<PendingLogRecord> records;
    std::set<SharedText, ByText> texts;
};

struct LogState
{
    PluginLogger pluginLogger;
    PendingLog pending;
};

/// Never destroyed: other threads may log while the process ends.
LogState& State()
{
    static LogState& state = *new LogState;
    return state;
}

SharedText TextFor(PendingLog& pending, const std::wstring& message)
{
    const auto known = pending.texts.find(message);
    return known != pending.texts.end() ? *known
                                        : *pending.texts.insert(std::make_shared<const std::wstring>(message)).first;
}

SharedText TextFor(PendingLog&, const SharedText& message)
{
    return message;
}

void Keep(std::vector<PendingLogRecord>& records, const SharedText& message, LogLevel level)
{
    // Compares pointers, not texts: it is faster, and equal pointers mean equal texts.
    if (!records.empty() && records.back().message == message && records.back().level == level)
        ++records.back().times;
    else
        records.push_back({message, level, 1});
}

/// A failure to log must never fail the step that logs: only the message is lost.
template <class Message>
void Write(const Message& message, const std::wstring& text, LogLevel level) noexcept
{
    try
    {
        const ProcessLockGuard guard(processLock);
        LogState& state = State();
        if (state.pluginLogger)
        {
            state.pluginLogger(text, level);
            return;
        }
        Keep(state.pending.records, TextFor(state.pending, message), level);
        if (level == TALIXLog::Error)
            WriteConsoleLine(std::wcout, text);
    }
    catch (...)
    {
        // Only the message is lost.
    }
}

void Deliver(const std::wstring& message, LogLevel level)
{
    try
    {
        if (State().pluginLogger)
            State().pluginLogger(message, level);
        else
            WriteConsoleLine(std::wcout, message);
    }
    catch (...)
    {
        // The next message may still succeed.
    }
}

} // namespace

void DefaultLogFunction(const std::wstring& message, LogLevel level)
{
    Write(message, message, level);
}

void LogSharedMessage(const std::shared_ptr<const std::wstring>& message, LogLevel level)
{
    Write(message, *message, level);
}

void SetPluginLogger(PluginLogger target)
{
    const ProcessLockGuard guard(processLock);
    State().pluginLogger = std::move(target);
}

void FlushPendingLog()
{
    const ProcessLockGuard guard(processLock);
    // Moved out first: a logger that logs from inside its own operation must not find the same records again.
    const PendingLog pending = std::exchange(State().pending, {});
    for (const PendingLogRecord& record : pending.records)
    {
        for (std::size_t time = 0; time < record.times; ++time)
            Deliver(*record.message, record.level);
    }
}

} // namespace Kestrany::IdentityServices
