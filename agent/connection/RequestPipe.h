#ifndef AGENT_CONNECTION_REQUESTPIPE_H
#define AGENT_CONNECTION_REQUESTPIPE_H

#include <functional>
#include <string>

#include "connection/Pipe.h"

namespace Kestrany::Agent {

/// The server process's end: takes one request at a time.
class RequestPipe
{
public:
    /// Throws std::runtime_error when the pipe cannot be made.
    RequestPipe();
    ~RequestPipe();
    RequestPipe(const RequestPipe&) = delete;
    RequestPipe& operator=(const RequestPipe&) = delete;

    /// Signalled when somebody is there.
    HANDLE Arrived() const { return connection_.Event(); }
    /// Answers who is there, and waits for the next one. Somebody who asks or leaves too slowly is sent away.
    void Serve(const std::function<std::string(const std::string& request)>& answer);

private:
    void AwaitNext();

    Pipe pipe_;
    PendingOperation connection_;
};

} // namespace Kestrany::Agent

#endif
