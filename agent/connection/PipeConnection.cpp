#include "connection/PipeConnection.h"

#include <exception>
#include <utility>

namespace Kestrany::Agent {

namespace {

/// Bytes that may wait for a client, because it does not read or because its handler holds them back. Beyond them the
/// connection ends.
constexpr std::size_t MaxWaiting = 4 * 1024 * 1024;

} // namespace

PipeConnection::PipeConnection(Handle pipe, const MakeHandler& makeHandler)
    : pipe_(std::move(pipe)), handler_(makeHandler([this](const std::string& message) { Send(message); }))
{
    // Operations that end in a callback use no event: the member is free for their owner.
    read_.hEvent = this;
    write_.hEvent = this;
    StartReading();
}

PipeConnection::~PipeConnection()
{
    over_ = true;
    CancelIoEx(pipe_.get(), nullptr);
    while (reading_ || writing_)
        SleepEx(INFINITE, TRUE);
}

void PipeConnection::OnRead(DWORD error, DWORD size, OVERLAPPED* operation)
{
    PipeConnection& self = Of(operation);
    self.reading_ = false;
    if (error != ERROR_SUCCESS || size == 0)
        self.over_ = true;
    if (self.over_)
        return;
    try
    {
        self.HandleBytes(size);
    }
    catch (const std::exception&)
    {
        // The caller is the system, which no exception may reach. Without memory for a response the connection ends.
        self.over_ = true;
    }
    self.StartReading();
}

void PipeConnection::OnWritten(DWORD error, DWORD size, OVERLAPPED* operation)
{
    PipeConnection& self = Of(operation);
    self.writing_ = false;
    const std::size_t frameSize = self.waiting_.front().size();
    self.waitingSize_ -= frameSize;
    self.waiting_.pop_front();
    if (error != ERROR_SUCCESS || size != frameSize)
        self.over_ = true;
    self.StartWriting();
}

void PipeConnection::StartReading()
{
    if (over_ || closing_)
        return;
    reading_ = ReadFileEx(pipe_.get(), buffer_.data(), ReadSize, &read_, OnRead) != 0;
    over_ = !reading_;
}

void PipeConnection::StartWriting()
{
    if (over_ || writing_ || waiting_.empty())
        return;
    const std::string& frame = waiting_.front();
    writing_ = WriteFileEx(pipe_.get(), frame.data(), static_cast<DWORD>(frame.size()), &write_, OnWritten) != 0;
    over_ = !writing_;
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
    std::string frame = WriteFrame(message);
    waitingSize_ += frame.size();
    waiting_.push_back(std::move(frame));
    if (HasTooMuchWaiting())
        over_ = true;
    StartWriting();
}

} // namespace Kestrany::Agent
