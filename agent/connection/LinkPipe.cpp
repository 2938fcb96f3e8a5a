#include "connection/LinkPipe.h"

#include <stdexcept>
#include <utility>

#include "platform/Text.h"

namespace Kestrany::Agent {

namespace {

constexpr DWORD ReadSize = 16 * 1024;

} // namespace

LinkPipe::LinkPipe(Handle file) : file_(std::move(file)), broken_(CreateEventW(nullptr, TRUE, FALSE, nullptr))
{
    if (!broken_)
        throw std::runtime_error("no event: " + SystemMessage(GetLastError()));
}

bool LinkPipe::Write(const std::string& message, const Deadline& deadline)
{
    const std::string frame = WriteFrame(message);
    const std::lock_guard lock(writing_);
    PendingOperation operation;
    const auto size = static_cast<DWORD>(frame.size());
    const bool begun =
        WriteFile(file_.get(), frame.data(), size, nullptr, operation.Get()) || GetLastError() == ERROR_IO_PENDING;
    if (begun && Finish(operation, deadline.Left()) == size)
        return true;
    // Part of the frame may be on its way: nothing after it would be understood.
    Break();
    return false;
}

std::optional<std::string> LinkPipe::Read(const Deadline* deadline)
{
    for (;;)
    {
        if (std::optional<std::string> message = frames_.Next())
            return message;
        if (frames_.IsBroken())
            return std::nullopt;
        char bytes[ReadSize];
        PendingOperation operation;
        if (!ReadFile(file_.get(), bytes, ReadSize, nullptr, operation.Get()) && GetLastError() != ERROR_IO_PENDING)
            return std::nullopt;
        const std::optional<DWORD> size = Finish(operation, deadline == nullptr ? INFINITE : deadline->Left());
        if (!size || *size == 0)
            return std::nullopt;
        frames_.Add(bytes, *size);
    }
}

std::optional<DWORD> LinkPipe::Finish(PendingOperation& operation, DWORD milliseconds)
{
    const HANDLE objects[] = {operation.Event(), broken_.get()};
    if (WaitForMultipleObjects(2, objects, FALSE, milliseconds) != WAIT_OBJECT_0)
        CancelIoEx(file_.get(), operation.Get());
    DWORD size = 0;
    if (!GetOverlappedResult(file_.get(), operation.Get(), &size, TRUE))
        return std::nullopt;
    return size;
}

} // namespace Kestrany::Agent
