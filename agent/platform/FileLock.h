#ifndef AGENT_PLATFORM_FILELOCK_H
#define AGENT_PLATFORM_FILELOCK_H

#include <mutex>
#include <string>

#include "platform/Handle.h"

namespace Kestrany::Agent {

/// A lock that one process holds at a time, by a file that all of them know. The process may take it several times, on
/// any of its threads, and has to give it back as often. The system gives back what a process held that ended.
class FileLock
{
public:
    /// Waits while another process holds the lock. False when the file cannot be locked; GetLastError tells why.
    bool Lock(const std::wstring& path);
    /// False when the process does not hold the lock.
    bool Unlock();

private:
    std::mutex mutex_;
    unsigned int count_ = 0;
    Handle file_; ///< Locked while it is open.
};

} // namespace Kestrany::Agent

#endif
