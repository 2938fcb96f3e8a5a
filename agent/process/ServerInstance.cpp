#include "process/ServerInstance.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>

#include "process/Scope.h"

namespace Kestrany::Agent {

namespace {

constexpr std::size_t MaxIdentity = 120;

/// What the section holds. A fixed width: processes of both bitnesses read it.
struct InstanceRecord
{
    std::atomic<std::uint32_t> processId;
};

struct ViewCloser
{
    void operator()(InstanceRecord* record) const { UnmapViewOfFile(record); }
};
using View = std::unique_ptr<InstanceRecord, ViewCloser>;

View MapRecord(HANDLE section, DWORD access)
{
    if (section == nullptr)
        return {};
    return View(static_cast<InstanceRecord*>(MapViewOfFile(section, access, 0, 0, sizeof(InstanceRecord))));
}

std::wstring ObjectName(const std::string& identity, const wchar_t* kind)
{
    return L"Local\\" + ScopeName() + L"." + std::wstring(identity.begin(), identity.end()) + L"." + kind;
}

std::wstring ProcessObjectName(DWORD processId, const wchar_t* kind)
{
    return L"Local\\" + ScopeName() + L".Process." + std::to_wstring(processId) + L"." + kind;
}

bool IsAlive(DWORD processId)
{
    const Handle process(OpenProcess(SYNCHRONIZE, FALSE, processId));
    return process && WaitForSingleObject(process.get(), 0) == WAIT_TIMEOUT;
}

} // namespace

bool IsValidIdentity(const std::string& identity)
{
    const auto isAllowed = [](char character) {
        return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') ||
               (character >= '0' && character <= '9') || character == '.' || character == '_' || character == '-';
    };
    return !identity.empty() && identity.size() <= MaxIdentity && identity.front() != '-' &&
           std::all_of(identity.begin(), identity.end(), isAllowed);
}

std::wstring ReadyEventName(const std::string& identity)
{
    return ObjectName(identity, L"Ready");
}

std::wstring StartMutexName(const std::string& identity)
{
    return ObjectName(identity, L"Start");
}

std::wstring QuitEventName(DWORD processId)
{
    return ProcessObjectName(processId, L"Quit");
}

std::wstring FrozenEventName(DWORD processId)
{
    return ProcessObjectName(processId, L"Frozen");
}

std::wstring ThawEventName(DWORD processId)
{
    return ProcessObjectName(processId, L"Thaw");
}

std::optional<DWORD> FindServer(const std::string& identity)
{
    const Handle section(OpenFileMappingW(FILE_MAP_READ, FALSE, ObjectName(identity, L"Instance").c_str()));
    if (!section)
        return std::nullopt;
    const View record = MapRecord(section.get(), FILE_MAP_READ);
    if (!record)
        return std::nullopt;
    const DWORD processId = record->processId.load();
    if (processId == 0 || !IsAlive(processId))
        return std::nullopt;
    return processId;
}

bool IsServerReady(const std::string& identity)
{
    const Handle ready(OpenEventW(SYNCHRONIZE, FALSE, ReadyEventName(identity).c_str()));
    return ready && WaitForSingleObject(ready.get(), 0) == WAIT_OBJECT_0 && FindServer(identity).has_value();
}

ServerInstance::ServerInstance(const std::string& identity) : identity_(identity) {}

ServerInstance::~ServerInstance()
{
    if (!claimed_)
        return;
    if (ready_)
        ResetReady();
    if (const View record = MapRecord(section_.get(), FILE_MAP_WRITE))
        record->processId = 0;
    ReleaseMutex(mutex_.get());
}

ServerInstance::Outcome ServerInstance::Claim()
{
    // The system releases a mutex whose owner died, so that a crash does not block the identity.
    mutex_.reset(CreateMutexW(nullptr, FALSE, ObjectName(identity_, L"Owner").c_str()));
    if (!mutex_)
        return Outcome::Failed;
    switch (WaitForSingleObject(mutex_.get(), 0))
    {
    case WAIT_OBJECT_0:
    case WAIT_ABANDONED:
        break;
    case WAIT_TIMEOUT:
        return Outcome::TakenByAnother;
    default:
        return Outcome::Failed;
    }
    claimed_ = true;

    // A starter that waits for the event may have created it, and it may be left set by a server that crashed.
    ready_.reset(CreateEventW(nullptr, TRUE, FALSE, ReadyEventName(identity_).c_str()));
    if (!ready_ || !ResetEvent(ready_.get()))
        return Outcome::Failed;
    quit_.reset(CreateEventW(nullptr, TRUE, FALSE, QuitEventName(GetCurrentProcessId()).c_str()));
    if (!quit_)
        return Outcome::Failed;
    section_.reset(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof(InstanceRecord),
                                      ObjectName(identity_, L"Instance").c_str()));
    if (!section_)
        return Outcome::Failed;
    const View record = MapRecord(section_.get(), FILE_MAP_WRITE);
    if (!record)
        return Outcome::Failed;
    record->processId = GetCurrentProcessId();
    return Outcome::Claimed;
}

} // namespace Kestrany::Agent
