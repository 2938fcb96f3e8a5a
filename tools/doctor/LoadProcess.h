#ifndef ORLINDEX_DOCTOR_LOADPROCESS_H
#define ORLINDEX_DOCTOR_LOADPROCESS_H

#include <string>

#include "Report.h"
#include "StartFacts.h"

namespace Orlindex::Doctor {

struct LoadRequest
{
    std::wstring host;
    std::wstring module; ///< Empty: the one that a start finds.
    unsigned timeoutSeconds;
};

/// Loads the plugin, whose path the facts hold, in a process of its own, as far as its interfaces: whatever the plugin
/// does there, this process goes on and can name the step.
void TryLoad(const LoadRequest& request, Report& report, StartFacts& facts);

} // namespace Orlindex::Doctor

#endif
