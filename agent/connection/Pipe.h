#ifndef AGENT_CONNECTION_PIPE_H
#define AGENT_CONNECTION_PIPE_H

#include <optional>
#include <string>

#include "platform/Deadline.h"
#include "platform/Handle.h"

namespace Kestrany::Agent {

/// An operation that the system carries on by itself until it has ended or was cancelled. It must not be moved or end
/// before: the system writes to it.
class PendingOperation
{
public:
    /// Throws std::runtime_error when the system is out of resources.
    PendingOperation();
    PendingOperation(const PendingOperation&) = delete;
    PendingOperation& operator=(const PendingOperation&) = delete;

    OVERLAPPED* Get() { return &overlapped_; }
    /// Signalled at its end.
    HANDLE Event() const { return event_.get(); }
    /// Waits for its end, and cancels it when the time is over. The bytes that were carried over; nothing without
    /// success.
    std::optional<DWORD> Finish(HANDLE file, const Deadline& deadline);

private:
    Handle event_;
    OVERLAPPED overlapped_{};
};

/// One end of a pipe between two processes, for whole messages of at most MaxMessage bytes.
class Pipe
{
public:
    static constexpr DWORD MaxMessage = 4096;

    explicit Pipe(Handle file) : file_(std::move(file)) {}

    HANDLE Get() const { return file_.get(); }
    bool Write(const std::string& message, const Deadline& deadline);
    /// Nothing when no message came within the time, or the other end is closed.
    std::optional<std::string> Read(const Deadline& deadline);

private:
    Handle file_;
};

} // namespace Kestrany::Agent

#endif
