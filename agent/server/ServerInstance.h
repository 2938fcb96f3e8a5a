#ifndef AGENT_SERVER_SERVERINSTANCE_H
#define AGENT_SERVER_SERVERINSTANCE_H

#include <optional>
#include <string>

#include "platform/Base.h"
#include "platform/ObjectNamespace.h"

namespace Kestrany::Agent {

/// Process ID of the server that runs under `identity` in this logon session; nullopt if none runs.
std::optional<DWORD> FindServer(const std::string& identity);
/// Whether that server accepts hosts.
bool IsServerReady(const std::string& identity);

/// The server process's own entry: while the object lives, the process is the one that runs under its identity.
class ServerInstance
{
public:
    enum class Outcome
    {
        Claimed,
        TakenByAnother,
        Failed ///< See GetLastError.
    };

    explicit ServerInstance(const std::string& identity);
    ~ServerInstance();
    ServerInstance(const ServerInstance&) = delete;
    ServerInstance& operator=(const ServerInstance&) = delete;

    Outcome Claim();
    void SetReady() const { SetEvent(ready_.get()); }
    /// To be called before the server ends: a starter then waits for its end.
    void ResetReady() const { ResetEvent(ready_.get()); }
    /// Set if the process is asked to quit.
    HANDLE QuitEvent() const { return quit_.get(); }

private:
    std::string identity_;
    Handle mutex_;
    Handle section_;
    Handle ready_;
    Handle quit_;
    bool claimed_ = false;
};

} // namespace Kestrany::Agent

#endif
