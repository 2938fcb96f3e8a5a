#include "OtherHost.h"

#include <stdexcept>

#include "Environment.h"
#include "HostRoles.h"
#include "Worker.h"
#include "platform/Base.h"
#include "server/ServerLaunch.h"
#include "support/Patience.h"

namespace Kestrany::Agent {

namespace {

constexpr DWORD Limit = OrlindexTest::PatienceMilliseconds;

std::string NewMeeting()
{
    static int count = 0;
    return OwnIdentity("Meeting") + "." + std::to_string(++count);
}

Handle StartHost(const std::vector<std::string>& arguments)
{
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::vector<std::wstring> texts{path};
    for (const std::string& argument : arguments)
        texts.push_back(WidenStrictly(argument).value());
    std::wstring line = JoinCommandLine(texts);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    if (!CreateProcessW(path, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &started))
        throw std::runtime_error("no other host: " + SystemMessage(GetLastError()));
    const Handle thread(started.hThread);
    return Handle(started.hProcess);
}

} // namespace

OtherHost::OtherHost(const std::string& role, const std::vector<std::string>& arguments)
{
    const std::string meeting = NewMeeting();
    arrived_.reset(CreateEventW(nullptr, TRUE, FALSE, ArrivedEventName(meeting).c_str()));
    leave_.reset(CreateEventW(nullptr, TRUE, FALSE, LeaveEventName(meeting).c_str()));
    progress_.reset(CreateEventW(nullptr, FALSE, FALSE, ProgressEventName(meeting).c_str()));
    std::vector<std::string> all{HostOption, meeting, role};
    all.insert(all.end(), arguments.begin(), arguments.end());
    process_ = StartHost(all);
}

OtherHost::~OtherHost()
{
    if (WaitForSingleObject(process_.get(), 0) == WAIT_TIMEOUT)
        Kill();
}

bool OtherHost::HasArrived() const
{
    const HANDLE objects[] = {arrived_.get(), process_.get()};
    return WaitForMultipleObjects(2, objects, FALSE, Limit) == WAIT_OBJECT_0;
}

std::optional<DWORD> OtherHost::ExitCode() const
{
    DWORD code = 0;
    if (WaitForSingleObject(process_.get(), Limit) != WAIT_OBJECT_0 || !GetExitCodeProcess(process_.get(), &code))
        return std::nullopt;
    return code;
}

} // namespace Kestrany::Agent
