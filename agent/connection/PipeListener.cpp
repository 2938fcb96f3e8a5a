#include "connection/PipeListener.h"

#include <stdexcept>
#include <utility>

#include "platform/Base.h"

namespace Kestrany::Agent {

PipeListener::PipeListener(std::wstring name) : name_(std::move(name)), pipe_(CreateInstance(true))
{
    AwaitNext();
}

PipeListener::~PipeListener()
{
    connection_.Finish(pipe_.get(), 0);
}

Handle PipeListener::Accept()
{
    DWORD ignored = 0;
    const bool connected = GetOverlappedResult(pipe_.get(), connection_.Get(), &ignored, FALSE);
    // The next instance first: without one, another process could take the name.
    Handle next = CreateInstance(false);
    Handle accepted = std::exchange(pipe_, std::move(next));
    AwaitNext();
    return connected ? std::move(accepted) : Handle();
}

Handle PipeListener::CreateInstance(bool first) const
{
    Handle pipe = CreatePipeInstance(name_, first);
    if (!pipe)
        throw std::runtime_error("no pipe " + Narrow(name_) + ": " + SystemMessage(GetLastError()));
    return pipe;
}

void PipeListener::AwaitNext()
{
    ResetEvent(connection_.Event());
    while (!ConnectNamedPipe(pipe_.get(), connection_.Get()))
    {
        switch (GetLastError())
        {
        case ERROR_IO_PENDING:
            return;
        case ERROR_PIPE_CONNECTED:
            connection_.Get()->Internal = 0; // Accept reads the status, which no operation has set here.
            SetEvent(connection_.Event());
            return;
        case ERROR_NO_DATA: // A client connected and left.
            DisconnectNamedPipe(pipe_.get());
            break;
        default:
            throw std::runtime_error("no further clients of " + Narrow(name_) + ": " + SystemMessage(GetLastError()));
        }
    }
}

} // namespace Kestrany::Agent
