#include "connection/ServerRequests.h"

#include "connection/Pipe.h"
#include "connection/PrivatePipe.h"
#include "platform/Deadline.h"
#include "platform/ObjectNamespace.h"

namespace Kestrany::Agent {

namespace {

std::optional<std::string> Ask(DWORD processId, const std::string& request, const Deadline& deadline)
{
    Handle file = OpenPrivatePipe(ProcessPipeName(processId), deadline);
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

} // namespace Kestrany::Agent
