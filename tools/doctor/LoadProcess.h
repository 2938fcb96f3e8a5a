#ifndef ORLINDEX_DOCTOR_LOADPROCESS_H
#define ORLINDEX_DOCTOR_LOADPROCESS_H

#include <string>
#include <vector>

#include "Report.h"
#include "StartUpFacts.h"

namespace Orlindex::Doctor {

// The load of the plugin in a separate process. LoadProcess.cpp is the tool's side, LoadChild.cpp the new process's.

struct LoadRequest
{
    std::wstring host;
    std::wstring module; ///< Empty for the one that the start-up finds.
    unsigned timeoutSeconds;
};

/// Loads the plugin of facts.modulePath in a separate process, as far as its interfaces, and fills facts.load. Whatever
/// the plugin does there, this process goes on and can name the step.
void TryLoad(const LoadRequest& request, Report& report, StartUpFacts& facts);

/// First argument of the process that loads a plugin. The tool passes it to itself; users do not.
inline constexpr wchar_t LoadChildCommand[] = L"load-in-this-process";

/// Runs in that process: starts up as a host does, and reports each step through the pipe. `arguments` are the pipe's
/// handle, the host's folder and, if one module is to be loaded, its path. The signature is verified as in a host.
/// Returns the exit code.
int RunLoadChild(const std::vector<std::wstring>& arguments);

} // namespace Orlindex::Doctor

#endif
