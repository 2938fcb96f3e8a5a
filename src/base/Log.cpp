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

/// What waits for a logger. A text is held once, however often it was written: a hostile file can have the same few
/// written by the million.
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
    // One object is one text, so that no texts need to be compared.
    if (!records.empty() && records.back().message == message && records.back().level == level)
        ++records.back().times;
    else
        records.push_back({message, level, 1});
}

/// A message must never cost its writer the step that it reports: whatever fails, the message alone is lost.
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
        // The message alone is lost.
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
        // The next message may still get through.
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
    // Taken out first: a logger that logs from inside its own operation must not meet the same records again.
    const PendingLog pending = std::exchange(State().pending, {});
    for (const PendingLogRecord& record : pending.records)
    {
        for (std::size_t time = 0; time < record.times; ++time)
            Deliver(*record.message, record.level);
    }
}

} // namespace Kestrany::IdentityServices
