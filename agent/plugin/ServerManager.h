#ifndef AGENT_PLUGIN_SERVERMANAGER_H
#define AGENT_PLUGIN_SERVERMANAGER_H

#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

#include "load/contract/ISSOServerManager.h"
#include "plugin/ServerConnection.h"

namespace Kestrany::Agent {

/// The path, identity names and arguments of the server application, and its processes.
class ServerManager final : public IdentityServices::ISSOServerManager
{
public:
    static constexpr std::size_t ArgumentCapacity = 1024; // Bytes.

    explicit ServerManager(LogSink log);

    /// The identity under which server processes are started and found.
    std::string ProcessIdentity() const;
    /// The server identity whose logins this process uses.
    std::string ServerIdentity() const;
    /// The server of this process, and how to start it.
    ServerTarget Target() const;

    void Reserved0() override {}
    void Reserved1() override {}
    void ConfigureServerApp(const wchar_t* location, const wchar_t* executableFile) override;
    /// The same as GetSSOServerAppExeFile: the application is one file. A buffer that is too small stays untouched.
    void GetSSOServerAppFile(wchar_t* buffer, int capacity) override;
    void GetSSOServerAppExeFile(wchar_t* buffer, int capacity) override;
    void Reserved5() override {}
    void SetProcessIdentityName(const char* name) override;
    int GetSSOServerName(char* buffer, int capacity) override;
    void SetServerIdentityName(const char* name) override;
    int GetSSOEventServerName(char* buffer, int capacity) override;
    bool StartSSOServerProcessWithArguments(const char* const* arguments, int count, std::int64_t timeout,
                                            std::int64_t& processId) override;
    bool StartSSOServerProcess(std::int64_t timeout, std::int64_t& processId) override;
    /// Each buffer must have ArgumentCapacity bytes and receives one argument; further buffers receive an empty text.
    /// False, with all buffers untouched, if there are more arguments than buffers, or one that is too long.
    bool GetSSOServerProcessArguments(char** buffers, int count) override;
    void SetSSOServerProcessArguments(const char* const* arguments, int count) override;
    bool IsSSOServerProcessRunning(std::int64_t& processId) override;
    bool IsSSOServerProcessReady() override;
    bool QuitSSOServerProcess(std::int64_t timeout) override;
    bool QuitAllSSOServerProcesses(std::int64_t timeout) override;
    /// Only logged: the library has already chosen the installation.
    void SetSupportBothLocalAndAdmin(bool support) override;

private:
    using Arguments = std::vector<std::string>;

    bool Start(const Arguments& arguments, std::int64_t timeout, std::int64_t& processId);
    std::wstring Executable() const;
    void CopyExecutable(wchar_t* buffer, int capacity) const;

    LogSink log_;
    ServerProcesses processes_;
    mutable std::mutex mutex_;
    std::wstring executable_;
    std::string processIdentity_;
    std::string serverIdentity_;
    Arguments arguments_;
};

} // namespace Kestrany::Agent

#endif
