#ifndef AGENT_SERVER_HOSTLISTENER_H
#define AGENT_SERVER_HOSTLISTENER_H

#include <string>

#include "connection/Pipe.h"

namespace Kestrany::Agent {

/// Takes the hosts that come to a server process, one after the other.
class HostListener
{
public:
    /// Throws std::runtime_error when the pipe cannot be made, as when another process has its name.
    explicit HostListener(std::wstring name);
    ~HostListener();
    HostListener(const HostListener&) = delete;
    HostListener& operator=(const HostListener&) = delete;

    /// Signalled when a host is there.
    HANDLE Arrived() const { return connection_.Event(); }
    /// The pipe to the host that is there, and waits for the next one. Null when the host has left again.
    Handle Take();

private:
    Handle MakePipe(bool first) const;
    void AwaitNext();

    const std::wstring name_;
    Handle pipe_;
    PendingOperation connection_;
};

} // namespace Kestrany::Agent

#endif
