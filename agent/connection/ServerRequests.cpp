#include "connection/ServerRequests.h"

#include <utility>

#include "connection/Pipe.h"
#include "identity/Json.h"
#include "platform/ObjectNamespace.h"

namespace Kestrany::Agent {

namespace {

/// The result of a request that succeeded.
std::optional<Json::Value> Ask(DWORD processId, const char* operation, const Deadline& deadline)
{
    Handle file = OpenPipe(ProcessPipeName(processId), deadline);
    ULONG owner = 0;
    // Another process could have created a pipe of that name.
    if (!file || !GetNamedPipeServerProcessId(file.get(), &owner) || owner != processId)
        return std::nullopt;
    PipeClient pipe(std::move(file));
    Request request;
    request.operation = operation;
    if (!pipe.Write(WriteRequest(request), deadline))
        return std::nullopt;
    const std::optional<std::string> text = pipe.Read(&deadline);
    const std::optional<ServerMessage> message = text ? ReadServerMessage(*text) : std::nullopt;
    if (!message || !message->response || message->response->code != IdSuccess)
        return std::nullopt;
    return message->response->result;
}

bool IsSet(HANDLE event)
{
    return event != nullptr && WaitForSingleObject(event, 0) == WAIT_OBJECT_0;
}

} // namespace

std::optional<std::map<std::string, std::string>> PingServer(unsigned long processId, std::int64_t limit)
{
    const std::optional<Json::Value> result = Ask(processId, Operations::Ping, Deadline(limit));
    if (!result)
        return std::nullopt;
    std::map<std::string, std::string> texts;
    for (const std::string& name : result->getMemberNames())
    {
        if (std::string text; TakeText(*result, name.c_str(), text))
            texts[name] = text;
    }
    return texts;
}

bool FreezeServer(unsigned long processId, std::int64_t limit)
{
    const Handle frozen(OpenEventW(SYNCHRONIZE, FALSE, FrozenEventName(processId).c_str()));
    return IsSet(frozen.get()) || Ask(processId, Operations::Freeze, Deadline(limit)).has_value();
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
