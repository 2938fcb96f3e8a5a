#ifndef ORLINDEX_RETRYSCHEDULE_H
#define ORLINDEX_RETRYSCHEDULE_H

#include <cstdint>
#include <vector>

namespace Kestrany::StdUtil {

/// One step of a schedule. The client plugin module defines the meaning, unit and range of the values.
struct RetryStep
{
    std::int64_t delay = 0; ///< Before each attempt of this step.
    std::int64_t tries = 0; ///< Number of attempts of this step.
};

/// How often and when a failed operation is retried. The library passes it between host and client plugin module and
/// does not look at its values.
struct RetrySchedule
{
    std::int64_t limit = 0;       ///< Limit of the whole schedule, as the plugin defines it.
    std::vector<RetryStep> steps; ///< In order.
};

} // namespace Kestrany::StdUtil

#endif
