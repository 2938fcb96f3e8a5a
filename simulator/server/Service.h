#ifndef SIMULATOR_SERVER_SERVICE_H
#define SIMULATOR_SERVER_SERVICE_H

#include <functional>
#include <string>

#include "process/Deadline.h"
#include "process/RequestPipe.h"
#include "process/ServerInstance.h"

namespace Kestrany::Simulator {

/// What the server application does while it runs: answers requests, and hangs where it is told to.
class Service
{
public:
    /// Throws std::runtime_error when the system is out of resources.
    explicit Service(std::string identity);

    /// Returns when `quit` is set, or `milliseconds` have passed. A frozen service notices the time alone.
    void Run(HANDLE quit, DWORD milliseconds);

private:
    std::string Answer(const std::string& request);
    std::string Ping() const;
    void StayFrozen(DWORD milliseconds);

    const std::string identity_;
    const unsigned long long start_;
    Handle frozen_; ///< Set while the service is.
    Handle thaw_;
    bool freezes_ = false;
    RequestPipe requests_;
};

} // namespace Kestrany::Simulator

#endif
