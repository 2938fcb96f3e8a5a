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

/// Passes a message to the plugin's logger. While there is none the message is kept for FlushPendingLog, and a failure
/// is also written to the wide standard output, so that a failed start is visible even if no logger ever comes. Never
/// throws; a message that cannot be kept or written is dropped.
void DefaultLogFunction(const std::wstring& message, LogLevel level);

/// The same for a text that is written again and again: while it is kept, its repeats in a row cost a count, no memory.
void LogSharedMessage(const std::shared_ptr<const std::wstring>& message, LogLevel level);

/// Sets where messages go from now on; an empty target means that there is no logger.
void SetPluginLogger(PluginLogger target);

/// Delivers the messages that were kept, in order; without a plugin logger, to the wide standard output.
void FlushPendingLog();

} // namespace Kestrany::IdentityServices

#endif
