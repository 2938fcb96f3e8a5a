#ifndef AGENT_CONNECTION_PIPELISTENER_H
#define AGENT_CONNECTION_PIPELISTENER_H

#include <string>

#include "connection/Pipe.h"

namespace Kestrany::Agent {

/// Accepts the clients of a pipe, one after the other.
class PipeListener
{
public:
    /// Throws std::runtime_error if the pipe cannot be created, also if another process has its name.
    explicit PipeListener(std::wstring name);
    ~PipeListener();
    PipeListener(const PipeListener&) = delete;
    PipeListener& operator=(const PipeListener&) = delete;

    /// Set when a client has connected.
    HANDLE Connected() const { return connection_.Event(); }
    /// Returns the pipe to the client that has connected, and waits for the next one. Null if the client has left.
    Handle Accept();

private:
    Handle CreateInstance(bool first) const;
    void AwaitNext();

    const std::wstring name_;
    Handle pipe_;
    PendingOperation connection_;
};

} // namespace Kestrany::Agent

#endif
