#ifndef AGENT_CONNECTION_PIPECONNECTION_H
#define AGENT_CONNECTION_PIPECONNECTION_H

#include <array>
#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "connection/Message.h"
#include "platform/Base.h"

namespace Kestrany::Agent {

/// The server's end of a pipe to one client. Reading and writing never wait: the system calls back on this thread while
/// the thread waits alertably.
class PipeConnection
{
public:
    using MakeHandler = std::function<std::unique_ptr<MessageHandler>(MessageHandler::Send send)>;

    PipeConnection(Handle pipe, const MakeHandler& makeHandler);
    /// Waits until the system has released the buffers.
    ~PipeConnection();
    PipeConnection(const PipeConnection&) = delete;
    PipeConnection& operator=(const PipeConnection&) = delete;

    /// Whether the client has left, or is to be disconnected and no message is left to be written.
    bool IsOver() const { return over_ || handler_->IsGivenUp() || (closing_ && !writing_); }

private:
    static constexpr std::size_t ReadSize = 16 * 1024;

    static void CALLBACK OnRead(DWORD error, DWORD size, OVERLAPPED* operation);
    static void CALLBACK OnWritten(DWORD error, DWORD size, OVERLAPPED* operation);
    static PipeConnection& Of(OVERLAPPED* operation) { return *static_cast<PipeConnection*>(operation->hEvent); }

    void StartReading();
    void StartWriting();
    void HandleBytes(std::size_t size);
    void Send(const std::string& message);
    bool HasTooMuchWaiting() const;

    const Handle pipe_;
    OVERLAPPED read_{};
    OVERLAPPED write_{};
    bool reading_ = false;
    bool writing_ = false;
    bool closing_ = false; ///< Nothing more is read.
    bool over_ = false;    ///< The pipe is of no use any more.
    std::array<char, ReadSize> buffer_{};
    FrameReader frames_;
    std::deque<std::string> waiting_; ///< Frames; the first one is being written.
    std::size_t waitingSize_ = 0;
    std::unique_ptr<MessageHandler> handler_; ///< The last member: it sends through the others.
};

} // namespace Kestrany::Agent

#endif
