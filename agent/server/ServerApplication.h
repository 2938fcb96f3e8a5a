#ifndef AGENT_SERVER_SERVERAPPLICATION_H
#define AGENT_SERVER_SERVERAPPLICATION_H

#include <cstdint>
#include <list>
#include <optional>
#include <string>

#include "connection/RequestPipe.h"
#include "server/Connection.h"
#include "server/HostListener.h"
#include "server/HostRegistry.h"

namespace Kestrany::Agent {

/// When the server application ends by itself. Seconds; nothing for never.
struct ServerLimits
{
    std::optional<unsigned int> quitAfter; ///< In any case.
    std::optional<unsigned int> idleAfter; ///< Without a host, and without anybody's asking.
};

/// What the server application does while it runs: serves hosts, answers requests of tools, and hangs where it is told
/// to. All of it on one thread, so that a hang is one for everybody.
class ServerApplication
{
public:
    /// Throws std::runtime_error when the system is out of resources, or another process has the name of its pipe.
    ServerApplication(std::string identity, ServerLimits limits, HostRegistry& registry);

    /// Returns when `quit` is set, or a limit has passed. A frozen service notices its longest time alone.
    void Run(HANDLE quit);
    /// Tells hosts that the service ends, after Run, and waits a little until they have left.
    void DisconnectHosts();

private:
    /// False when the service is asked to quit.
    bool WaitOnce(HANDLE quit);
    void RemoveHosts();
    void TakeHost();
    void ServeRequest();
    std::string Answer(const std::string& request);
    std::string Ping() const;
    void StayFrozen();

    std::optional<std::int64_t> IdleEnd() const;
    DWORD TimeToWait() const;
    bool IsOver(std::optional<std::int64_t> end) const;

    const std::string identity_;
    const std::int64_t start_;
    const ServerLimits limits_;
    const std::optional<std::int64_t> end_;
    std::int64_t lastUse_;
    HostRegistry& registry_;
    Handle frozen_; ///< Set while the service is.
    Handle thaw_;
    bool freezes_ = false;
    RequestPipe requests_;
    HostListener listener_;
    std::list<Connection> hosts_;
};

} // namespace Kestrany::Agent

#endif
