#ifndef AGENT_PROCESS_SERVEREXITCODE_H
#define AGENT_PROCESS_SERVEREXITCODE_H

namespace Kestrany::Agent {

/// Exit codes of the server application.
enum ServerExitCode : int
{
    ServerQuit = 0,            ///< It was asked to quit, or its time was over.
    ServerFailed = 1,          ///< The system refused something that it needs.
    ServerUsage = 2,           ///< Its arguments are wrong.
    ServerAlreadyRunning = 3,  ///< Another process runs under the identity.
    ServerScenarioInvalid = 4, ///< The scenario file that it was to look at is wrong.
    ServerCrashed = 70         ///< A fault of the scenario.
};

} // namespace Kestrany::Agent

#endif
