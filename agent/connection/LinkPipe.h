#ifndef AGENT_CONNECTION_LINKPIPE_H
#define AGENT_CONNECTION_LINKPIPE_H

#include <deque>
#include <mutex>
#include <optional>
#include <string>

#include "connection/Message.h"
#include "connection/Pipe.h"

namespace Kestrany::Agent {

/// A host's end of the pipe to its server. Any thread may write and break; one reads.
class LinkPipe
{
public:
    /// Throws std::runtime_error when the system is out of resources.
    explicit LinkPipe(Handle file);

    HANDLE Get() const { return file_.get(); }
    bool Write(const std::string& message, const Deadline& deadline);
    /// The next message; waits for it. Nothing when the deadline passes, and when the connection has ended or broken.
    std::optional<std::string> Read(const Deadline* deadline);
    /// Ends the connection: whoever reads or writes comes back without success.
    void Break() { SetEvent(broken_.get()); }

private:
    /// Waits for the end of an operation. The bytes that were carried over; nothing without success.
    std::optional<DWORD> Finish(PendingOperation& operation, DWORD milliseconds);

    Handle file_;
    Handle broken_;
    std::mutex writing_;
    FrameReader frames_;
};

} // namespace Kestrany::Agent

#endif
