#ifndef AGENT_TESTS_OTHERHOST_H
#define AGENT_TESTS_OTHERHOST_H

#include <optional>
#include <string>
#include <vector>

#include "platform/Base.h"

namespace Kestrany::Agent {

/// Another process with the plugin module in it: this executable in one of the roles of HostRoles.h.
class OtherHost
{
public:
    OtherHost(const std::string& role, const std::vector<std::string>& arguments);
    /// Ends a process that a failed test has left.
    ~OtherHost();
    OtherHost(const OtherHost&) = delete;
    OtherHost& operator=(const OtherHost&) = delete;

    /// Waits until the host waits for the test. False if it has ended instead.
    bool HasArrived() const;
    void Leave() const { SetEvent(leave_.get()); }
    /// Waits for the end of the process. nullopt if it goes on.
    std::optional<DWORD> ExitCode() const;
    void Kill() const { TerminateProcess(process_.get(), 9); }
    HANDLE Process() const { return process_.get(); }
    /// Set by a worker after each round, see Worker.h.
    HANDLE Progress() const { return progress_.get(); }

private:
    Handle arrived_;
    Handle leave_;
    Handle progress_;
    Handle process_;
};

} // namespace Kestrany::Agent

#endif
