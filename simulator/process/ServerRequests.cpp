#include "process/ServerRequests.h"

#include "process/Deadline.h"
#include "process/Pipe.h"
#include "process/ServerInstance.h"

namespace Kestrany::Simulator {

namespace {

Handle OpenPipe(const std::wstring& name, const Deadline& deadline)
{
    for (;;)
    {
        // The server learns who asks, but cannot act for the asker.
        Handle pipe =
            OwnValid(CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                 FILE_FLAG_OVERLAPPED | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION, nullptr));
        if (pipe || GetLastError() != ERROR_PIPE_BUSY)
            return pipe;
        // Others ask at the same time. A limit of 0 would mean the pipe's own.
        const DWORD left = deadline.Left();
        if (left == 0 || !WaitNamedPipeW(name.c_str(), left))
            return {};
    }
}

std::optional<std::string> Ask(DWORD processId, const std::string& request, const Deadline& deadline)
{
    Handle file = OpenPipe(ServerPipeName(processId), deadline);
    DWORD mode = PIPE_READMODE_MESSAGE;
    ULONG owner = 0;
    // Any process could have made a pipe of the name.
    if (!file || !GetNamedPipeServerProcessId(file.get(), &owner) || owner != processId ||
        !SetNamedPipeHandleState(file.get(), &mode, nullptr, nullptr))
        return std::nullopt;
    Pipe pipe(std::move(file));
    if (!pipe.Write(request, deadline))
        return std::nullopt;
    return pipe.Read(deadline);
}

bool IsSet(HANDLE event)
{
    return event != nullptr && WaitForSingleObject(event, 0) == WAIT_OBJECT_0;
}

} // namespace

std::optional<Answers> PingServer(unsigned long processId, std::int64_t limit)
{
    const std::optional<std::string> message = Ask(processId, PingRequest, Deadline(limit));
    if (!message)
        return std::nullopt;
    return ReadAnswers(*message);
}

bool FreezeServer(unsigned long processId, std::int64_t limit)
{
    const Handle frozen(OpenEventW(SYNCHRONIZE, FALSE, FrozenEventName(processId).c_str()));
    return IsSet(frozen.get()) || Ask(processId, FreezeRequest, Deadline(limit)) == FreezeAnswer;
}

bool ThawServer(unsigned long processId, std::int64_t limit)
{
    const Handle frozen(OpenEventW(SYNCHRONIZE, FALSE, FrozenEventName(processId).c_str()));
    const Handle thaw(OpenEventW(EVENT_MODIFY_STATE, FALSE, ThawEventName(processId).c_str()));
    if (!thaw || !IsSet(frozen.get()))
        return false;
    SetEvent(thaw.get());
    return PingServer(processId, limit).has_value();
}

} // namespace Kestrany::Simulator
