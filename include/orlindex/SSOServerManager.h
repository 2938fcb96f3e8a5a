#ifndef ORLINDEX_SSOSERVERMANAGER_H
#define ORLINDEX_SSOSERVERMANAGER_H

#include <chrono>
#include <cstdint>

#include "Export.h"

namespace Kestrany::IdentityServices {

/// Starts, watches and quits the processes of the server application.
///
/// Static members only. Each obtains the plugin's server-process interface (ISSOServerManager), which loads the plugin
/// on first use, with or without IdServicesMgr::Initialize, and forwards to one slot with its arguments unchanged; zero
/// and negative times too. Without the interface the answer is false and no output is touched. The plugin runs on the
/// caller's thread with no lock of the library held: a long time-out blocks only the caller. Its exceptions pass to the
/// caller.
class ORLINDEX_API SSOServerManager
{
public:
    /// Writes the file name of the server application (slot 3). `capacity` of `buffer` in UTF-16 units; what happens to
    /// a text that does not fit is the plugin's rule.
    static void GetSSOServerAppFile(wchar_t* buffer, int capacity);
    /// Writes the executable file of the server application (slot 4). See GetSSOServerAppFile.
    static void GetSSOServerAppExeFile(wchar_t* buffer, int capacity);
    /// Starts a server process and waits at most `timeout` until it is ready (slot 11). `processId` receives its ID.
    static bool StartSSOServerProcess(std::chrono::milliseconds timeout, std::int64_t& processId);
    /// Whether a server process runs (slot 14). `processId` receives its ID.
    static bool IsSSOServerProcessRunning(std::int64_t& processId);
    /// Whether a server process runs (slot 14).
    static bool IsSSOServerProcessRunning();
    /// Whether a server process runs and takes requests (slot 15).
    static bool IsSSOServerProcessReady();
    /// Asks the server process to quit and waits at most `timeout` (slot 16).
    static bool QuitSSOServerProcess(std::chrono::milliseconds timeout);
    /// Asks all server processes to quit and waits at most `timeout` (slot 17).
    static bool QuitAllSSOServerProcesses(std::chrono::milliseconds timeout);

    SSOServerManager() = default;                                   ///< There is no state: objects serve no purpose.
    SSOServerManager(const SSOServerManager&) = default;            ///< There is no state to copy.
    SSOServerManager& operator=(const SSOServerManager& other);     ///< There is no state: does nothing.
    SSOServerManager& operator=(SSOServerManager&& other) noexcept; ///< There is no state: does nothing.
};

} // namespace Kestrany::IdentityServices

#endif
