#ifndef AGENT_SERVER_CONNECTION_H
#define AGENT_SERVER_CONNECTION_H

#include <array>
#include <deque>
#include <string>

#include "connection/Message.h"
#include "platform/Handle.h"
#include "server/HostSession.h"

namespace Kestrany::Agent {

/// The server's end of the connection to one host. Reading and writing never wait: the system calls back on this thread
/// while it waits alertably.
class Connection
{
public:
    Connection(HostRegistry& registry, Handle pipe);
    /// Waits until the system has let go of the buffers.
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// The host has left, or was sent away, and nothing is left to be written.
    bool IsOver() const { return over_ || host_.IsGivenUp() || (leaving_ && !writing_); }
    /// Somebody who came, and has not said that it is a host, does not keep the server running.
    bool IsHost() const { return host_.IsAttached(); }
    void SendShutdown() { host_.SendShutdown(); }

private:
    static constexpr std::size_t ReadSize = 16 * 1024;

    static void CALLBACK OnRead(DWORD error, DWORD size, OVERLAPPED* operation);
    static void CALLBACK OnWritten(DWORD error, DWORD size, OVERLAPPED* operation);
    static Connection& Of(OVERLAPPED* operation) { return *static_cast<Connection*>(operation->hEvent); }

    void StartReading();
    void StartWriting();
    void Take(std::size_t size);
    void Send(std::string message);
    bool HasTooMuchWaiting() const;

    const Handle pipe_;
    OVERLAPPED read_{};
    OVERLAPPED write_{};
    bool reading_ = false;
    bool writing_ = false;
    bool leaving_ = false; ///< Nothing more is read.
    bool over_ = false;    ///< The pipe is of no use any more.
    std::array<char, ReadSize> buffer_{};
    FrameReader frames_;
    std::deque<std::string> waiting_; ///< Frames; the first one is on its way.
    std::size_t waitingSize_ = 0;
    HostSession host_; ///< The last member: it sends through the others.
};

} // namespace Kestrany::Agent

#endif
