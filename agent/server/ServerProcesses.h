#ifndef AGENT_SERVER_SERVERPROCESSES_H
#define AGENT_SERVER_SERVERPROCESSES_H

#include <cstdint>
#include <string>
#include <vector>

#include "platform/LogFile.h"

namespace Kestrany::Agent {

/// Exit codes of the server application.
enum ServerExitCode : int
{
    ServerQuit = 0,            ///< It was asked to quit, or its time was over.
    ServerFailed = 1,          ///< The system refused something that it needs.
    ServerUsage = 2,           ///< Its arguments are wrong.
    ServerAlreadyRunning = 3,  ///< Another process runs under the identity.
    ServerScenarioInvalid = 4, ///< The scenario file to check is wrong.
    ServerCrashed = 70         ///< An injected fault.
};

/// Starts and quits server processes. Time limits in milliseconds; one of 0 or less does not wait.
class ServerProcesses
{
public:
    explicit ServerProcesses(LogSink log);

    /// Starts `executable` under `identity`, unless a server runs under it, and waits until it is ready. True if it is
    /// within the limit. `processId` is set also for a server that is not ready yet.
    bool Start(const std::wstring& executable, const std::string& identity, const std::vector<std::wstring>& arguments,
               std::int64_t limit, std::int64_t& processId) const;
    /// Asks the server of `identity` to quit. True if none runs, or if it ended within the limit. One that did not end
    /// is terminated, unless the limit is 0 or less.
    bool Quit(const std::string& identity, std::int64_t limit) const;
    /// Quit for every server process that was started from a file of this name.
    bool QuitAll(const std::wstring& executableName, std::int64_t limit) const;

private:
    bool QuitProcesses(const std::vector<unsigned long>& processIds, std::int64_t limit) const;

    LogSink log_;
};

} // namespace Kestrany::Agent

#endif
