#include "server/Connection.h"

#include <exception>
#include <utility>

namespace Kestrany::Agent {

namespace {

/// Bytes that may wait for a host, because it does not read or because the scenario holds them back, before it is given
/// up.
constexpr std::size_t MaxWaiting = 4 * 1024 * 1024;

} // namespace

Connection::Connection(HostRegistry& registry, Handle pipe)
    : pipe_(std::move(pipe)), host_(registry, [this](std::string message) { Send(std::move(message)); })
{
    // Operations that end in a call have no event: the place is free for their owner.
    read_.hEvent = this;
    write_.hEvent = this;
    StartReading();
}

Connection::~Connection()
{
    over_ = true;
    CancelIoEx(pipe_.get(), nullptr);
    while (reading_ || writing_)
        SleepEx(INFINITE, TRUE);
}

void Connection::OnRead(DWORD error, DWORD size, OVERLAPPED* operation)
{
    Connection& self = Of(operation);
    self.reading_ = false;
    if (error != ERROR_SUCCESS || size == 0)
        self.over_ = true;
    if (self.over_)
        return;
    try
    {
        self.Take(size);
    }
    catch (const std::exception&)
    {
        // The system called: nothing may pass to it. A host that cannot be answered is given up.
        self.over_ = true;
    }
    self.StartReading();
}

void Connection::OnWritten(DWORD error, DWORD size, OVERLAPPED* operation)
{
    Connection& self = Of(operation);
    self.writing_ = false;
    const std::size_t frameSize = self.waiting_.front().size();
    self.waitingSize_ -= frameSize;
    self.waiting_.pop_front();
    if (error != ERROR_SUCCESS || size != frameSize)
        self.over_ = true;
    self.StartWriting();
}

void Connection::StartReading()
{
    if (over_ || leaving_)
        return;
    reading_ = ReadFileEx(pipe_.get(), buffer_.data(), ReadSize, &read_, OnRead) != 0;
    over_ = !reading_;
}

void Connection::StartWriting()
{
    if (over_ || writing_ || waiting_.empty())
        return;
    const std::string& frame = waiting_.front();
    writing_ = WriteFileEx(pipe_.get(), frame.data(), static_cast<DWORD>(frame.size()), &write_, OnWritten) != 0;
    over_ = !writing_;
}

void Connection::Take(std::size_t size)
{
    frames_.Add(buffer_.data(), size);
    while (const std::optional<std::string> message = frames_.Next())
    {
        if (!host_.Receive(*message))
        {
            leaving_ = true;
            return;
        }
        if (HasTooMuchWaiting())
            over_ = true;
        if (over_)
            return;
    }
    if (frames_.IsBroken())
        leaving_ = true;
}

bool Connection::HasTooMuchWaiting() const
{
    return waitingSize_ + host_.HeldBack() > MaxWaiting;
}

void Connection::Send(std::string message)
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
