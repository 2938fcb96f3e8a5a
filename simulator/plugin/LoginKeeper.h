#ifndef SIMULATOR_PLUGIN_LOGINKEEPER_H
#define SIMULATOR_PLUGIN_LOGINKEEPER_H

#include <functional>
#include <mutex>
#include <string>

#include "platform/FileLock.h"
#include "process/ServerProcesses.h"
#include "session/Session.h"

namespace Kestrany::Simulator {

/// Folder of what the simulator keeps for the user; empty when the user has no local application data.
std::wstring SettingsFolder();

/// File of the login at `server` that hosts of the server application `identity` share; empty where either is invalid.
std::wstring LoginFile(const std::string& identity, Server server);

/// Keeps the session's logins beyond the process, in files that only the user can read on this machine. Hosts that talk
/// to the same server application share them. Any thread may call.
class LoginKeeper
{
public:
    /// `identity` answers the identity name of the server application.
    LoginKeeper(Session& session, std::function<std::string()> identity, LogSink log);

    /// Makes the file of `server` say what the session says now. A failure is logged, and the login goes on.
    void Keep(Server server);
    /// Takes over what the file of `server` says. `replace`: also when somebody is signed in there. False when there is
    /// no file, or one that is refused, which is logged.
    bool Load(Server server, bool replace);

    /// Locks the files against other processes, see FileLock. Keep and Load take the lock, too.
    void Lock();
    void Unlock();

private:
    std::wstring LockFile() const;
    void Write(const std::wstring& file, const LoginRecord& record, Server server) const;
    void Remove(const std::wstring& file) const;
    bool Refuse(const std::wstring& file, const std::string& reason) const;

    Session& session_;
    const std::function<std::string()> identity_;
    const LogSink log_;
    FileLock lock_;
    /// Held from the session's answer until the file says so: the last one who writes knows the last state.
    std::mutex keeping_;
};

} // namespace Kestrany::Simulator

#endif
