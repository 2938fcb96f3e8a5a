#include "connection/Pipe.h"

#include <stdexcept>

#include "platform/Text.h"

namespace Kestrany::Agent {

PendingOperation::PendingOperation() : event_(CreateEventW(nullptr, TRUE, FALSE, nullptr))
{
    if (!event_)
        throw std::runtime_error("no event: " + SystemMessage(GetLastError()));
    overlapped_.hEvent = event_.get();
}

std::optional<DWORD> PendingOperation::Finish(HANDLE file, const Deadline& deadline)
{
    if (WaitForSingleObject(event_.get(), deadline.Left()) != WAIT_OBJECT_0)
        CancelIoEx(file, &overlapped_);
    DWORD size = 0;
    if (!GetOverlappedResult(file, &overlapped_, &size, TRUE))
        return std::nullopt;
    return size;
}

bool Pipe::Write(const std::string& message, const Deadline& deadline)
{
    PendingOperation operation;
    const auto size = static_cast<DWORD>(message.size());
    if (!WriteFile(file_.get(), message.data(), size, nullptr, operation.Get()) && GetLastError() != ERROR_IO_PENDING)
        return false;
    return operation.Finish(file_.get(), deadline) == size;
}

std::optional<std::string> Pipe::Read(const Deadline& deadline)
{
    PendingOperation operation;
    std::string message(MaxMessage, '\0');
    if (!ReadFile(file_.get(), message.data(), MaxMessage, nullptr, operation.Get()) &&
        GetLastError() != ERROR_IO_PENDING)
        return std::nullopt;
    const std::optional<DWORD> size = operation.Finish(file_.get(), deadline);
    if (!size)
        return std::nullopt;
    message.resize(*size);
    return message;
}

} // namespace Kestrany::Agent
