#ifndef AGENT_PLATFORM_FILELOCK_H
#define AGENT_PLATFORM_FILELOCK_H

#include <mutex>
#include <string>

#include "platform/Base.h"

namespace Kestrany::Agent {

/// A lock on a file that one process holds at a time. The process may lock several times, on any thread, and has to
/// unlock as often. The system releases the lock of a process that ends.
class FileLock
{
public:
    /// Waits while another process holds the lock. False, with GetLastError, if the file cannot be locked.
    bool Lock(const std::wstring& path);
    /// False if the process does not hold the lock.
    bool Unlock();

private:
    std::mutex mutex_;
    unsigned int count_ = 0;
    Handle file_; ///< Locked while it is open.
};

} // namespace Kestrany::Agent

#endif
