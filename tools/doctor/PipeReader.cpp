#include "PipeReader.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "Texts.h"

namespace Orlindex::Doctor {

using namespace Ids;

namespace {

constexpr DWORD bufferSize = 64 * 1024;

/// Milliseconds to wait for a cancelled read. The system cancels at once, but no wait may be without a time-out.
constexpr DWORD cancelLimit = 10'000;

std::wstring PipeName()
{
    LARGE_INTEGER counter = {};
    QueryPerformanceCounter(&counter);
    return L"\\\\.\\pipe\\orlindex-doctor." + std::to_wstring(GetCurrentProcessId()) + L'.' +
           std::to_wstring(counter.QuadPart);
}

[[noreturn]] void ThrowNoPipe()
{
    throw std::runtime_error("cannot make a pipe: " + ErrorText(GetLastError()));
}

DWORD MillisecondsLeft(std::uint64_t start, std::uint64_t limit)
{
    const std::uint64_t passed = GetTickCount64() - start;
    const std::uint64_t left = passed < limit ? limit - passed : 0;
    return static_cast<DWORD>(std::min<std::uint64_t>(left, INFINITE - 1));
}

} // namespace

/// A pending read. The system writes to the object until the read has ended.
struct PipeReader::Operation
{
    Operation() : ended(CreateEventW(nullptr, TRUE, FALSE, nullptr))
    {
        if (!ended)
            ThrowNoPipe();
    }

    bool HasEnded(DWORD milliseconds) const { return WaitForSingleObject(ended.get(), milliseconds) == WAIT_OBJECT_0; }

    Handle ended;
    OVERLAPPED overlapped = {};
    char buffer[4096] = {};
};

/// CreatePipe makes pipes without overlapped reads: a read there has no time-out and ends only when the last write
/// handle is closed.
Pipe MakePipe()
{
    const std::wstring name = PipeName();
    Handle readEnd = OwnFile(
        CreateNamedPipeW(name.c_str(), PIPE_ACCESS_INBOUND | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
                         PIPE_TYPE_BYTE | PIPE_REJECT_REMOTE_CLIENTS, 1, 0, bufferSize, 0, nullptr));
    if (!readEnd)
        ThrowNoPipe();
    SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
    // The pipe has one instance, so nobody else can connect after this.
    Handle writeEnd = OwnFile(CreateFileW(name.c_str(), GENERIC_WRITE, 0, &inheritable, OPEN_EXISTING, 0, nullptr));
    if (!writeEnd)
        ThrowNoPipe();
    return {std::move(readEnd), std::move(writeEnd)};
}

PipeReader::PipeReader(HANDLE readEnd, Taker take)
    : readEnd_(readEnd), lines_(std::move(take)), operation_(std::make_unique<Operation>())
{
    StartReading();
}

PipeReader::~PipeReader()
{
    if (!operation_ || operation_->HasEnded(0))
        return;
    CancelIoEx(readEnd_, &operation_->overlapped);
    if (!operation_->HasEnded(cancelLimit))
    {
        // The system may still write to the object, so it is never deleted.
        [[maybe_unused]] const Operation* const abandoned = operation_.release();
    }
}

PipeReader::End PipeReader::ReadUntilEnd(HANDLE process, std::uint64_t milliseconds)
{
    const std::uint64_t start = GetTickCount64();
    for (;;)
    {
        const HANDLE objects[] = {process, operation_ ? operation_->ended.get() : nullptr};
        const DWORD count = operation_ ? 2 : 1;
        switch (WaitForMultipleObjects(count, objects, FALSE, MillisecondsLeft(start, milliseconds)))
        {
        case WAIT_OBJECT_0:
            return TakeRest() ? End::ProcessEnded : End::TooMuch;
        case WAIT_OBJECT_0 + 1:
            if (!TakeRead())
                return End::TooMuch;
            break;
        default:
            return End::TimedOut;
        }
    }
}

void PipeReader::StartReading()
{
    operation_->overlapped = {};
    operation_->overlapped.hEvent = operation_->ended.get();
    ResetEvent(operation_->ended.get());
    if (!ReadFile(readEnd_, operation_->buffer, sizeof operation_->buffer, nullptr, &operation_->overlapped) &&
        GetLastError() != ERROR_IO_PENDING)
        operation_.reset(); // The last write handle is closed.
}

bool PipeReader::TakeRead()
{
    DWORD size = 0;
    if (!GetOverlappedResult(readEnd_, &operation_->overlapped, &size, FALSE) || size == 0)
    {
        operation_.reset();
        return true;
    }
    if (!lines_.Take(operation_->buffer, size))
        return false;
    StartReading();
    return true;
}

/// A read completes at once if the pipe contains bytes. If it is cancelled, the pipe is empty, and reading stops.
bool PipeReader::TakeRest()
{
    while (operation_)
    {
        CancelIoEx(readEnd_, &operation_->overlapped);
        if (!operation_->HasEnded(cancelLimit))
            return true;
        if (!TakeRead())
            return false;
    }
    return true;
}

} // namespace Orlindex::Doctor
