#include "server/Service.h"

#include <stdexcept>
#include <utility>

#include "platform/Text.h"
#include "process/Answers.h"

namespace Kestrany::Simulator {

namespace {

Handle MakeEvent(const std::wstring& name)
{
    Handle event(CreateEventW(nullptr, TRUE, FALSE, name.c_str()));
    if (!event)
        throw std::runtime_error("no event: " + SystemMessage(GetLastError()));
    return event;
}

} // namespace

Service::Service(std::string identity)
    : identity_(std::move(identity)), start_(GetTickCount64()),
      frozen_(MakeEvent(FrozenEventName(GetCurrentProcessId()))), thaw_(MakeEvent(ThawEventName(GetCurrentProcessId())))
{
}

void Service::Run(HANDLE quit, DWORD milliseconds)
{
    const bool endless = milliseconds == INFINITE;
    const Deadline deadline(endless ? 0 : milliseconds);
    const HANDLE objects[] = {quit, requests_.Arrived()};
    // Quitting comes first: the wait answers the first object that is signalled.
    while (WaitForMultipleObjects(2, objects, FALSE, endless ? INFINITE : deadline.Left()) == WAIT_OBJECT_0 + 1)
    {
        requests_.Serve([this](const std::string& request) { return Answer(request); });
        if (freezes_)
            StayFrozen(endless ? INFINITE : deadline.Left());
    }
}

std::string Service::Answer(const std::string& request)
{
    if (request == PingRequest)
        return Ping();
    if (request != FreezeRequest)
        return "unknown request";
    // Set before the answer: whoever reads it finds the service frozen.
    ResetEvent(thaw_.get());
    SetEvent(frozen_.get());
    freezes_ = true;
    return FreezeAnswer;
}

std::string Service::Ping() const
{
    return WriteAnswers({{"processId", std::to_string(GetCurrentProcessId())},
                         {"identity", identity_},
                         {"version", SIMULATOR_VERSION},
                         {"uptimeMilliseconds", std::to_string(GetTickCount64() - start_)}});
}

void Service::StayFrozen(DWORD milliseconds)
{
    WaitForSingleObject(thaw_.get(), milliseconds);
    freezes_ = false;
    ResetEvent(frozen_.get());
}

} // namespace Kestrany::Simulator
