#ifndef SIMULATOR_PROCESS_SERVEREXITCODE_H
#define SIMULATOR_PROCESS_SERVEREXITCODE_H

namespace Kestrany::Simulator {

/// Exit codes of the server application.
enum ServerExitCode : int
{
    ServerQuit = 0,          ///< It was asked to quit, or its time was over.
    ServerFailed = 1,        ///< The system refused something that it needs.
    ServerUsage = 2,         ///< Its arguments are wrong.
    ServerAlreadyRunning = 3 ///< Another process runs under the identity.
};

} // namespace Kestrany::Simulator

#endif
