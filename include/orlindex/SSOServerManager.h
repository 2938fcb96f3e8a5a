#ifndef ORLINDEX_SSOSERVERMANAGER_H
#define ORLINDEX_SSOSERVERMANAGER_H

#include <chrono>
#include <cstdint>

#include "Export.h"

namespace Kestrany::IdentityServices {

/// Starts, monitors and quits the processes of the server application.
///
/// It has static members only. Each forwards its arguments unchanged, even zero and negative times, to one slot of the
/// plugin's server-process interface (ISSOServerManager). The first use loads the plugin, with or without
/// IdServicesMgr::Initialize. Without the interface a member returns false and leaves its outputs unchanged. The plugin
/// runs on the caller's thread, without any lock of the library: a long time-out blocks only the caller. Exceptions of
/// the plugin pass to the caller.
class ORLINDEX_API SSOServerManager
{
public:
    /// Writes the file name of the server application (slot 3). `capacity` of `buffer` in UTF-16 units; the plugin
    /// decides what happens to a text that does not fit.
    static void GetSSOServerAppFile(wchar_t* buffer, int capacity);
    /// Writes the executable file of the server application (slot 4). See GetSSOServerAppFile.
    static void GetSSOServerAppExeFile(wchar_t* buffer, int capacity);
    /// Starts a server process, and waits at most `timeout` until it is ready (slot 11). `processId` receives its ID.
    static bool StartSSOServerProcess(std::chrono::milliseconds timeout, std::int64_t& processId);
    /// Whether a server process is running (slot 14). `processId` receives its ID.
    static bool IsSSOServerProcessRunning(std::int64_t& processId);
    /// Whether a server process is running (slot 14).
    static bool IsSSOServerProcessRunning();
    /// Whether a server process is running and accepts requests (slot 15).
    static bool IsSSOServerProcessReady();
    /// Asks the server process to quit, and waits at most `timeout` (slot 16). Returns whether it did.
    static bool QuitSSOServerProcess(std::chrono::milliseconds timeout);
    /// Asks all server processes to quit, and waits at most `timeout` (slot 17). Returns whether all did.
    static bool QuitAllSSOServerProcesses(std::chrono::milliseconds timeout);

    SSOServerManager() = default;                                   ///< There is no state: objects serve no purpose.
    SSOServerManager(const SSOServerManager&) = default;            ///< There is no state to copy.
    SSOServerManager& operator=(const SSOServerManager& other);     ///< There is no state: does nothing.
    SSOServerManager& operator=(SSOServerManager&& other) noexcept; ///< There is no state: does nothing.
};

} // namespace Kestrany::IdentityServices

#endif
