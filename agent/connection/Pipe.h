#ifndef AGENT_CONNECTION_PIPE_H
#define AGENT_CONNECTION_PIPE_H

#include <mutex>
#include <optional>
#include <string>

#include "connection/Message.h"
#include "platform/Base.h"
#include "platform/Deadline.h"

namespace Kestrany::Agent {

/// An overlapped operation on a pipe. The system writes to the object until the operation has ended, so it must not be
/// moved or destroyed before.
class PendingOperation
{
public:
    /// Throws std::runtime_error if the system is out of resources.
    PendingOperation();
    PendingOperation(const PendingOperation&) = delete;
    PendingOperation& operator=(const PendingOperation&) = delete;

    /// Begin an operation, after the end of the one before. An operation that fails at once never sets the event:
    /// Finish then does not wait.
    void Read(HANDLE file, void* bytes, DWORD size);
    void Write(HANDLE file, const void* bytes, DWORD size);

    OVERLAPPED* Get() { return &overlapped_; }
    /// Set when the operation has ended.
    HANDLE Event() const { return event_.get(); }
    /// Waits for the end. Cancels the operation after `milliseconds`, and when `cancelled` is set; null: never. Returns
    /// the bytes that were transferred; nullopt, with GetLastError, if the operation failed.
    std::optional<DWORD> Finish(HANDLE file, DWORD milliseconds, HANDLE cancelled = nullptr);

private:
    void Begin(BOOL hasEnded);

    Handle event_;
    OVERLAPPED overlapped_{};
    DWORD beginError_ = ERROR_SUCCESS;
};

/// Creates an instance of a named pipe, the server's end, that only processes of the same user on this machine can
/// open. `first`: fails if another process has created the name, which would receive what is meant for this one. Null,
/// with GetLastError, on failure.
Handle CreatePipeInstance(const std::wstring& name, bool first);

/// Opens the client's end. Waits for a free instance until the deadline. Null, with GetLastError, on failure.
Handle OpenPipe(const std::wstring& name, const Deadline& deadline);

/// Returns why the process at the server's end of a pipe is not trusted; empty if it is this user's and runs the file
/// `executable`, by whatever path.
std::string WhyNotTrusted(HANDLE pipe, const std::wstring& executable);

/// Whether the server's end of a pipe is closed, as when its process has ended.
bool IsBroken(HANDLE pipe);

/// The client's end of a pipe to a server process. Any thread may write and break the connection; one thread at a time
/// reads.
class PipeClient
{
public:
    /// Throws std::runtime_error if the system is out of resources.
    explicit PipeClient(Handle file);

    HANDLE Get() const { return file_.get(); }
    bool Write(const std::string& message, const Deadline& deadline);
    /// Waits for the next message, without a limit if `deadline` is null. nullopt after the deadline, and if the
    /// connection has ended.
    std::optional<std::string> Read(const Deadline* deadline);
    /// Whether Read found that the connection has ended. For the thread that reads.
    bool IsOver() const { return isOver_; }
    /// Ends the connection: pending reads and writes return without success.
    void Break() { SetEvent(broken_.get()); }

private:
    Handle file_;
    Handle broken_;
    std::mutex writing_;
    // Kept: making an event for each operation would take longer than most operations.
    PendingOperation write_; ///< Used under `writing_`.
    PendingOperation read_;
    FrameReader frames_;
    bool isOver_ = false;
};

} // namespace Kestrany::Agent

#endif
