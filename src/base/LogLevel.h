#ifndef ORLINDEX_BASE_LOGLEVEL_H
#define ORLINDEX_BASE_LOGLEVEL_H

#include <cstdint>

namespace Kestrany::TALIXLog {

/// Severity of a log message, as the plugin's logger receives it.
enum LogLevel : std::int32_t
{
    Error = 2,   ///< A failure; also written to the wide standard output while the plugin has no logger.
    Warning = 4, ///< A search that falls back to a bare file name.
    Info = 8     ///< Progress.
};

} // namespace Kestrany::TALIXLog

#endif
