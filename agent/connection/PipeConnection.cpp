#include "connection/PipeConnection.h"

#include <exception>
#include <utility>

namespace Kestrany::Agent {

namespace {

/// Bytes that may wait for a client, because it does not read or because its handler holds them back. Beyond them the
/// connection ends.
constexpr std::size_t MaxWaiting = 4 * 1024 * 1024;

/// Bytes of frames that are written at once.
constexpr std::size_t MaxJoined = 32 * 1024;

} // namespace

PipeConnection::PipeConnection(Handle pipe, HANDLE transferred, const MakeHandler& makeHandler)
    : pipe_(std::move(pipe)), transferred_(transferred),
      handler_(makeHandler([this](const std::string& message) { Send(message); }))
{
    read_.hEvent = transferred_;
    write_.hEvent = transferred_;
    StartReading();
}

PipeConnection::~PipeConnection()
{
    CancelIoEx(pipe_.get(), nullptr);
    if (reading_)
        AwaitEnd(read_);
    if (writing_)
        AwaitEnd(write_);
}

bool PipeConnection::HasTransfers() const
{
    return (reading_ && HasEnded(read_)) || (writing_ && HasEnded(write_));
}

void PipeConnection::HandleTransfers()
{
    if (writing_ && HasEnded(write_))
    {
        HandleWritten();
        StartWriting();
    }
    if (!reading_ || !HasEnded(read_))
        return;
    reading_ = false;
    const std::optional<std::size_t> size = ResultOf(read_);
    if (!size || *size == 0)
        over_ = true;
    if (over_)
        return;
    try
    {
        HandleBytes(*size);
    }
    catch (const std::exception&)
    {
        // Without memory for a response the connection ends, and the others go on.
        over_ = true;
    }
    StartReading();
}

std::optional<std::size_t> PipeConnection::ResultOf(const OVERLAPPED& operation) const
{
    DWORD size = 0;
    // The function does not change the operation: it takes a pointer for older callers.
    if (!GetOverlappedResult(pipe_.get(), const_cast<OVERLAPPED*>(&operation), &size, FALSE))
        return std::nullopt;
    return size;
}

bool PipeConnection::HasEnded(const OVERLAPPED& operation) const
{
    return ResultOf(operation) || GetLastError() != ERROR_IO_INCOMPLETE;
}

void PipeConnection::AwaitEnd(const OVERLAPPED& operation) const
{
    // May take the signal of another connection, whose transfer HasTransfers finds.
    while (!HasEnded(operation))
        WaitForSingleObject(transferred_, INFINITE);
}

void PipeConnection::StartReading()
{
    if (over_ || closing_)
        return;
    reading_ = ReadFile(pipe_.get(), buffer_.data(), ReadSize, nullptr, &read_) || GetLastError() == ERROR_IO_PENDING;
    over_ = !reading_;
}

void PipeConnection::StartWriting()
{
    // Most writes end at once: nobody has to wait for them.
    while (!over_ && !held_ && !writing_ && !waiting_.empty())
    {
        const std::string& frame = waiting_.front();
        writing_ = WriteFile(pipe_.get(), frame.data(), static_cast<DWORD>(frame.size()), nullptr, &write_) ||
                   GetLastError() == ERROR_IO_PENDING;
        over_ = !writing_;
        if (writing_ && HasEnded(write_))
            HandleWritten();
    }
}

void PipeConnection::Release()
{
    held_ = false;
    StartWriting();
}

void PipeConnection::HandleWritten()
{
    writing_ = false;
    const std::size_t frameSize = waiting_.front().size();
    if (ResultOf(write_) != frameSize)
        over_ = true;
    waitingSize_ -= frameSize;
    waiting_.pop_front();
}

void PipeConnection::HandleBytes(std::size_t size)
{
    frames_.Add(buffer_.data(), size);
    while (const std::optional<std::string> message = frames_.Next())
    {
        if (!handler_->Receive(*message))
        {
            closing_ = true;
            return;
        }
        if (HasTooMuchWaiting())
            over_ = true;
        if (over_)
            return;
    }
    if (frames_.IsBroken())
        closing_ = true;
}

bool PipeConnection::HasTooMuchWaiting() const
{
    return waitingSize_ + handler_->HeldBack() > MaxWaiting;
}

void PipeConnection::Send(const std::string& message)
{
    if (over_)
        return;
    Append(WriteFrame(message));
    if (HasTooMuchWaiting())
        over_ = true;
    StartWriting();
}

void PipeConnection::Append(std::string frame)
{
    waitingSize_ += frame.size();
    const bool hasOpenFrame = waiting_.size() > (writing_ ? 1U : 0U);
    if (hasOpenFrame && waiting_.back().size() + frame.size() <= MaxJoined)
        waiting_.back() += frame;
    else
        waiting_.push_back(std::move(frame));
}

} // namespace Kestrany::Agent
