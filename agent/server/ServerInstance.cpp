#include "server/ServerInstance.h"

#include <atomic>
#include <cstdint>
#include <memory>

namespace Kestrany::Agent {

namespace {

/// Content of the shared section. Its width is fixed: processes of both bitnesses read it.
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

bool IsAlive(DWORD processId)
{
    const Handle process(OpenProcess(SYNCHRONIZE, FALSE, processId));
    return process && WaitForSingleObject(process.get(), 0) == WAIT_TIMEOUT;
}

} // namespace

std::optional<DWORD> FindServer(const std::string& identity)
{
    const Handle section(OpenFileMappingW(FILE_MAP_READ, FALSE, SessionObjectName(identity + ".Instance").c_str()));
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
    // The system releases the mutex of an owner that died: a crash does not block the identity.
    mutex_.reset(CreateMutexW(nullptr, FALSE, SessionObjectName(identity_ + ".Owner").c_str()));
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

    // A waiting starter may have created the event, and a server that crashed may have left it set.
    ready_.reset(CreateEventW(nullptr, TRUE, FALSE, ReadyEventName(identity_).c_str()));
    if (!ready_ || !ResetEvent(ready_.get()))
        return Outcome::Failed;
    quit_.reset(CreateEventW(nullptr, TRUE, FALSE, QuitEventName(GetCurrentProcessId()).c_str()));
    if (!quit_)
        return Outcome::Failed;
    section_.reset(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof(InstanceRecord),
                                      SessionObjectName(identity_ + ".Instance").c_str()));
    if (!section_)
        return Outcome::Failed;
    const View record = MapRecord(section_.get(), FILE_MAP_WRITE);
    if (!record)
        return Outcome::Failed;
    record->processId = GetCurrentProcessId();
    return Outcome::Claimed;
}

} // namespace Kestrany::Agent
