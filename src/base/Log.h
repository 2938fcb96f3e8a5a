#ifndef ORLINDEX_BASE_LOG_H
#define ORLINDEX_BASE_LOG_H

#include <functional>
#include <memory>
#include <string>

#include "base/LogLevel.h"

namespace Kestrany::IdentityServices {

using TALIXLog::LogLevel;

using LogSink = std::function<void(std::wstring message, LogLevel level)>;
using PluginLogger = std::function<void(const std::wstring& message, LogLevel level)>;

/// Passes a message to the plugin's logger. Without a logger the message is stored for FlushPendingLog, and a failure
/// is also written to the wide standard output, so that a failed start is visible even if no logger ever follows. Never
/// throws; a message that cannot be stored or written is dropped.
void DefaultLogFunction(const std::wstring& message, LogLevel level);

/// DefaultLogFunction for a text that is logged again and again: stored repeats in a row only increment a counter and
/// need no memory.
void LogSharedMessage(const std::shared_ptr<const std::wstring>& message, LogLevel level);

/// Sets the target of messages from now on; an empty target means that there is no logger.
void SetPluginLogger(PluginLogger target);

/// Delivers the stored messages, in order; without a plugin logger, to the wide standard output.
void FlushPendingLog();

} // namespace Kestrany::IdentityServices

#endif
