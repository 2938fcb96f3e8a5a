#ifndef AGENT_CONNECTION_PIPECONNECTION_H
#define AGENT_CONNECTION_PIPECONNECTION_H

#include <array>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "connection/Message.h"
#include "platform/Base.h"

namespace Kestrany::Agent {

/// The server's end of a pipe to one client. Reading and writing never wait: the owner of the connection waits for the
/// event and then calls HandleTransfers. One thread.
class PipeConnection
{
public:
    using MakeHandler = std::function<std::unique_ptr<MessageHandler>(MessageHandler::Send send)>;

    /// `transferred`, which resets itself, is set when a read or write has ended. Several connections may share it.
    PipeConnection(Handle pipe, HANDLE transferred, const MakeHandler& makeHandler);
    /// Waits until the system has released the buffers.
    ~PipeConnection();
    PipeConnection(const PipeConnection&) = delete;
    PipeConnection& operator=(const PipeConnection&) = delete;

    /// Whether a read or write has ended that HandleTransfers has not handled. To be asked before each wait: when
    /// another connection that shares the event begins a transfer, the system resets the event.
    bool HasTransfers() const;
    /// Handles the message that has arrived, and begins what comes next.
    void HandleTransfers();

    /// Until Release, messages are kept. Those of one moment then go in one write, and the client wakes once.
    void Hold() { held_ = true; }
    void Release();

    /// Whether the client has left, or is to be disconnected and no message is left to be written.
    bool IsOver() const { return over_ || handler_->IsGivenUp() || (closing_ && waiting_.empty()); }

private:
    static constexpr std::size_t ReadSize = 16 * 1024;

    /// The bytes of an operation that has begun; nullopt, with GetLastError, if it has not ended or has failed.
    std::optional<std::size_t> ResultOf(const OVERLAPPED& operation) const;
    bool HasEnded(const OVERLAPPED& operation) const;
    void AwaitEnd(const OVERLAPPED& operation) const;
    void StartReading();
    void StartWriting();
    void HandleWritten();
    void HandleBytes(std::size_t size);
    void Send(const std::string& message);
    void Append(std::string frame);
    bool HasTooMuchWaiting() const;

    const Handle pipe_;
    const HANDLE transferred_;
    OVERLAPPED read_{};
    OVERLAPPED write_{};
    bool reading_ = false;
    bool writing_ = false;
    bool closing_ = false; ///< Nothing more is read.
    bool over_ = false;    ///< The pipe is of no use any more.
    bool held_ = false;    ///< No write begins.
    std::array<char, ReadSize> buffer_{};
    FrameReader frames_;
    std::deque<std::string> waiting_; ///< Frames, some of them joined; the first one may be being written.
    std::size_t waitingSize_ = 0;
    std::unique_ptr<MessageHandler> handler_; ///< The last member: it sends through the others.
};

} // namespace Kestrany::Agent

#endif
