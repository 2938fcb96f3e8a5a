#ifndef ORLINDEX_RETRYSCHEDULE_H
#define ORLINDEX_RETRYSCHEDULE_H

#include <cstdint>
#include <vector>

namespace Kestrany::StdUtil {

/// One step of a schedule. The client plugin module gives the values their meaning; that of the simulator is given
/// here.
struct RetryStep
{
    std::int64_t delay = 0; ///< Milliseconds before each try of this step.
    std::int64_t tries = 0; ///< How many tries the step makes.
};

/// How often and when something that failed is tried again. The library passes it between host and plugin and looks at
/// nothing in it.
struct RetrySchedule
{
    std::int64_t limit = 0;       ///< Milliseconds after which no further try is made; 0 for no limit.
    std::vector<RetryStep> steps; ///< One after the other.
};

} // namespace Kestrany::StdUtil

#endif
