#include "connection/RequestPipe.h"

#include <stdexcept>

#include "connection/PrivatePipe.h"
#include "platform/ObjectNamespace.h"
#include "platform/Text.h"

namespace Kestrany::Agent {

namespace {

/// Milliseconds that one request may take of the others' time.
constexpr std::int64_t RequestLimit = 1000;

Handle MakePipe()
{
    Handle pipe =
        CreatePrivatePipe(ProcessPipeName(GetCurrentProcessId()), PipeKind::Messages, true, 1, Pipe::MaxMessage);
    if (!pipe)
        throw std::runtime_error("no pipe for requests: " + SystemMessage(GetLastError()));
    return pipe;
}

} // namespace

RequestPipe::RequestPipe() : pipe_(MakePipe())
{
    AwaitNext();
}

RequestPipe::~RequestPipe()
{
    connection_.Finish(pipe_.Get(), Deadline(0));
}

void RequestPipe::Serve(const std::function<std::string(const std::string& request)>& answer)
{
    const Deadline deadline(RequestLimit);
    const std::optional<std::string> request = pipe_.Read(deadline);
    // What was not read yet is lost when the connection ends: the other end leaves first.
    if (request && pipe_.Write(answer(*request), deadline))
        pipe_.Read(deadline);
    DisconnectNamedPipe(pipe_.Get());
    AwaitNext();
}

void RequestPipe::AwaitNext()
{
    ResetEvent(connection_.Event());
    while (!ConnectNamedPipe(pipe_.Get(), connection_.Get()))
    {
        switch (GetLastError())
        {
        case ERROR_IO_PENDING:
            return;
        case ERROR_PIPE_CONNECTED:
            SetEvent(connection_.Event());
            return;
        case ERROR_NO_DATA: // Somebody came and left.
            DisconnectNamedPipe(pipe_.Get());
            break;
        default:
            throw std::runtime_error("no further requests: " + SystemMessage(GetLastError()));
        }
    }
}

} // namespace Kestrany::Agent
