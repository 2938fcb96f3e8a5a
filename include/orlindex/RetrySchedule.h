#ifndef ORLINDEX_RETRYSCHEDULE_H
#define ORLINDEX_RETRYSCHEDULE_H

#include <cstdint>
#include <vector>

namespace Kestrany::StdUtil {

/// One step of a schedule. The client plugin module gives the values their meaning, unit and range.
struct RetryStep
{
    std::int64_t delay = 0; ///< Before each try of this step.
    std::int64_t tries = 0; ///< How many tries the step makes.
};

/// How often and when something that failed is tried again. The library passes it between host and client plugin module
/// and looks at nothing in it.
struct RetrySchedule
{
    std::int64_t limit = 0;       ///< Bound of the whole schedule, as the plugin understands it.
    std::vector<RetryStep> steps; ///< One after the other.
};

} // namespace Kestrany::StdUtil

#endif
