#ifndef AGENT_IDENTITY_OPENID_WINDOWS_LOOPBACKSERVER_H
#define AGENT_IDENTITY_OPENID_WINDOWS_LOOPBACKSERVER_H

#include <memory>

#include "identity/openid/Services.h"

namespace Kestrany::Agent::OpenId {

/// Listens for the browser of this machine, on a thread of its own. Programs of other machines cannot connect. Requests
/// that are too long, and connections that stay idle, end without disturbing others.
class LoopbackServer final : public LoopbackListeners
{
public:
    /// Throws std::runtime_error if the system is out of resources.
    LoopbackServer();
    /// Ends all listeners and their connections.
    ~LoopbackServer() override;
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    std::unique_ptr<LoopbackListener> Listen(const std::string& host, const std::vector<std::uint16_t>& ports,
                                             Handler handler, std::string& problem) override;

private:
    class Service;
    const std::shared_ptr<Service> service_;
};

} // namespace Kestrany::Agent::OpenId

#endif
