#ifndef ORLINDEX_BASE_PROCESSLOCK_H
#define ORLINDEX_BASE_PROCESSLOCK_H

#include <mutex>
#include <windows.h>

namespace Kestrany::IdentityServices {

/// The one process-wide recursive lock. It guards the client module manager, the loaded plugin's interfaces and the
/// log.
///
/// Every forwarded call takes it once, so it is the platform's cheapest recursive lock. It is never destroyed: other
/// threads may still use it while the process ends.
class ProcessLock
{
public:
    ProcessLock() { InitializeCriticalSection(&section_); }
    ProcessLock(const ProcessLock&) = delete;
    ProcessLock& operator=(const ProcessLock&) = delete;

    void lock() { EnterCriticalSection(&section_); }
    void unlock() { LeaveCriticalSection(&section_); }

private:
    CRITICAL_SECTION section_;
};

inline ProcessLock processLock;

using ProcessLockGuard = std::lock_guard<ProcessLock>;

} // namespace Kestrany::IdentityServices

#endif
