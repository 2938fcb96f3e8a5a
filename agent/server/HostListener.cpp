#include "server/HostListener.h"

#include <stdexcept>
#include <utility>

#include "connection/PrivatePipe.h"
#include "platform/Text.h"

namespace Kestrany::Agent {

namespace {

constexpr DWORD BufferSize = 64 * 1024;

} // namespace

HostListener::HostListener(std::wstring name) : name_(std::move(name)), pipe_(MakePipe(true))
{
    AwaitNext();
}

HostListener::~HostListener()
{
    connection_.Finish(pipe_.get(), Deadline(0));
}

Handle HostListener::Take()
{
    DWORD ignored = 0;
    const bool connected = GetOverlappedResult(pipe_.get(), connection_.Get(), &ignored, FALSE);
    // The next one first: the name is never without a pipe of this process.
    Handle next = MakePipe(false);
    Handle taken = std::exchange(pipe_, std::move(next));
    AwaitNext();
    return connected ? std::move(taken) : Handle();
}

Handle HostListener::MakePipe(bool first) const
{
    Handle pipe = CreatePrivatePipe(name_, PipeKind::Bytes, first, PIPE_UNLIMITED_INSTANCES, BufferSize);
    if (!pipe)
        throw std::runtime_error("no pipe for hosts: " + SystemMessage(GetLastError()));
    return pipe;
}

void HostListener::AwaitNext()
{
    ResetEvent(connection_.Event());
    while (!ConnectNamedPipe(pipe_.get(), connection_.Get()))
    {
        switch (GetLastError())
        {
        case ERROR_IO_PENDING:
            return;
        case ERROR_PIPE_CONNECTED:
            connection_.Get()->Internal = 0; // Asked for by Take: no operation has set it.
            SetEvent(connection_.Event());
            return;
        case ERROR_NO_DATA: // Somebody came and left.
            DisconnectNamedPipe(pipe_.get());
            break;
        default:
            throw std::runtime_error("no further hosts: " + SystemMessage(GetLastError()));
        }
    }
}

} // namespace Kestrany::Agent
