#ifndef ORLINDEX_CONTRACT_ISSOSERVERMANAGER_H
#define ORLINDEX_CONTRACT_ISSOSERVERMANAGER_H

#include <cstdint>

namespace Kestrany::IdentityServices {

/// Starts, watches and quits the server application's processes. Time limits are signed 64-bit counts of milliseconds;
/// capacities count characters.
class ISSOServerManager
{
public:
    virtual void Reserved0() = 0;
    virtual void Reserved1() = 0;
    /// Slot 2. Where the server application is: its directory and its executable file. Called first, while loading.
    virtual void ConfigureServerApp(const wchar_t* location, const wchar_t* executableFile) = 0;
    virtual void GetSSOServerAppFile(wchar_t* buffer, int capacity) = 0;
    virtual void GetSSOServerAppExeFile(wchar_t* buffer, int capacity) = 0;
    virtual void Reserved5() = 0;
    /// Slot 6. Identity name that server processes are started and found under.
    virtual void SetProcessIdentityName(const char* name) = 0;
    /// Slot 7. Answers the length written.
    virtual int GetSSOServerName(char* buffer, int capacity) = 0;
    /// Slot 8. Identity name of the server that this process talks to.
    virtual void SetServerIdentityName(const char* name) = 0;
    /// Slot 9. Answers the length written.
    virtual int GetSSOEventServerName(char* buffer, int capacity) = 0;
    virtual bool StartSSOServerProcessWithArguments(const char* const* arguments, int count, std::int64_t timeout,
                                                    std::int64_t& processId) = 0;
    virtual bool StartSSOServerProcess(std::int64_t timeout, std::int64_t& processId) = 0;
    /// Slot 12. Each argument into a buffer of the caller's; how large they must be is the plugin's rule.
    virtual bool GetSSOServerProcessArguments(char** buffers, int count) = 0;
    virtual void SetSSOServerProcessArguments(const char* const* arguments, int count) = 0;
    virtual bool IsSSOServerProcessRunning(std::int64_t& processId) = 0;
    virtual bool IsSSOServerProcessReady() = 0;
    virtual bool QuitSSOServerProcess(std::int64_t timeout) = 0;
    virtual bool QuitAllSSOServerProcesses(std::int64_t timeout) = 0;
    /// Slot 18. Whether a per-user and a per-machine installation may both serve.
    virtual void SetSupportBothLocalAndAdmin(bool support) = 0;

protected:
    ~ISSOServerManager() = default;
};

} // namespace Kestrany::IdentityServices

#endif
