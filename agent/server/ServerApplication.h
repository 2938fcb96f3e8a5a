#ifndef AGENT_SERVER_SERVERAPPLICATION_H
#define AGENT_SERVER_SERVERAPPLICATION_H

#include <cstdint>
#include <list>
#include <optional>
#include <string>

#include "connection/PipeConnection.h"
#include "connection/PipeListener.h"
#include "server/HostRegistry.h"
#include "server/HostSession.h"

namespace Kestrany::Agent {

/// When the server application ends by itself. Seconds; nullopt for never.
struct ServerLimits
{
    std::optional<unsigned int> quitAfter; ///< In any case.
    std::optional<unsigned int> idleAfter; ///< Without a host and without a request of a tool.
};

/// The main loop of the server application: accepts hosts and tools, and freezes on request. All of it runs on one
/// thread, so that a frozen server process is frozen for everybody.
class ServerApplication
{
public:
    /// Throws std::runtime_error if the system is out of resources, or if another process has the name of a pipe.
    ServerApplication(std::string identity, ServerLimits limits, HostRegistry& registry);

    /// Returns when `quit` is set, or a limit has passed. While frozen, only the `quitAfter` limit counts. `wake`,
    /// which resets itself, is set when the source has something to do.
    void Run(HANDLE quit, HANDLE wake);
    /// After Run: tells the hosts that the server shuts down, and waits a short time until they have left.
    void DisconnectHosts();

private:
    struct HostConnection
    {
        HostConnection(HostRegistry& registry, Handle pipe, HANDLE transferred);

        HostSession* session = nullptr; ///< Owned by the connection.
        PipeConnection connection;
    };

    /// False if the process is asked to quit.
    bool WaitOnce(HANDLE quit, HANDLE wake);
    /// Whether HandleTransfers has something to do, about which no event may be set.
    void RunTimers();
    bool HasTransfers() const;
    void HandleTransfers();
    void RemoveConnections();
    void AcceptHost();
    void AcceptTool();
    std::optional<Json::Value> PerformToolOperation(const std::string& operation);
    Json::Value Describe() const;
    void StayFrozen();

    std::optional<std::int64_t> IdleEnd() const;
    DWORD TimeToWait() const;
    bool IsPast(std::optional<std::int64_t> end) const;

    const std::string identity_;
    const std::int64_t start_;
    const ServerLimits limits_;
    const std::optional<std::int64_t> end_;
    std::int64_t lastUse_;
    HostRegistry& registry_;
    Handle frozen_; ///< Set while the process is frozen.
    Handle thaw_;
    Handle transferred_;   ///< Set when a read or write of a connection has ended. Resets itself.
    bool freezes_ = false; ///< The process freezes once the response is sent.
    PipeListener toolListener_;
    PipeListener hostListener_;
    std::list<PipeConnection> tools_; ///< The oldest first.
    std::list<HostConnection> hosts_;
    std::optional<std::int64_t> toolsEnd_; ///< When the newest tool is disconnected at the latest.
};

} // namespace Kestrany::Agent

#endif
