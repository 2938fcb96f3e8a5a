#ifndef ORLINDEX_CONTRACT_ISSOSERVERMANAGER_H
#define ORLINDEX_CONTRACT_ISSOSERVERMANAGER_H

#include <cstdint>

namespace Kestrany::IdentityServices {

/// Starts, monitors and quits the server application's processes. Time limits are signed 64-bit counts of milliseconds;
/// capacities are in characters.
class ISSOServerManager
{
public:
    virtual void Reserved0() = 0;
    virtual void Reserved1() = 0;
    /// Slot 2. Sets the location of the server application: its directory and its executable file. Called before any
    /// other slot, during the load of the plugin.
    virtual void ConfigureServerApp(const wchar_t* location, const wchar_t* executableFile) = 0;
    virtual void GetSSOServerAppFile(wchar_t* buffer, int capacity) = 0;
    virtual void GetSSOServerAppExeFile(wchar_t* buffer, int capacity) = 0;
    virtual void Reserved5() = 0;
    /// Slot 6. Sets the identity name under which server processes are started and found.
    virtual void SetProcessIdentityName(const char* name) = 0;
    /// Slot 7. Returns the length written.
    virtual int GetSSOServerName(char* buffer, int capacity) = 0;
    /// Slot 8. Sets the identity name of the server that this process uses.
    virtual void SetServerIdentityName(const char* name) = 0;
    /// Slot 9. Returns the length written.
    virtual int GetSSOEventServerName(char* buffer, int capacity) = 0;
    virtual bool StartSSOServerProcessWithArguments(const char* const* arguments, int count, std::int64_t timeout,
                                                    std::int64_t& processId) = 0;
    virtual bool StartSSOServerProcess(std::int64_t timeout, std::int64_t& processId) = 0;
    /// Slot 12. Writes each argument into a caller-owned buffer; the plugin defines how large the buffers must be.
    virtual bool GetSSOServerProcessArguments(char** buffers, int count) = 0;
    virtual void SetSSOServerProcessArguments(const char* const* arguments, int count) = 0;
    virtual bool IsSSOServerProcessRunning(std::int64_t& processId) = 0;
    virtual bool IsSSOServerProcessReady() = 0;
    virtual bool QuitSSOServerProcess(std::int64_t timeout) = 0;
    virtual bool QuitAllSSOServerProcesses(std::int64_t timeout) = 0;
    /// Slot 18. Sets whether both a per-user and a per-machine installation are supported.
    virtual void SetSupportBothLocalAndAdmin(bool support) = 0;

protected:
    ~ISSOServerManager() = default;
};

} // namespace Kestrany::IdentityServices

#endif
