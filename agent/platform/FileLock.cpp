#include "platform/FileLock.h"

#include <utility>

#include "platform/Folders.h"

namespace Kestrany::Agent {

namespace {

/// The locked range, which stands for the whole file.
constexpr DWORD LockedBytes = 1;

} // namespace

bool FileLock::Lock(const std::wstring& path)
{
    const std::lock_guard guard(mutex_);
    if (count_ == 0)
    {
        CreateFoldersAbove(path);
        Handle file = OwnFile(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS,
                                          FILE_ATTRIBUTE_NORMAL, nullptr));
        OVERLAPPED start{};
        if (!file || !LockFileEx(file.get(), LOCKFILE_EXCLUSIVE_LOCK, 0, LockedBytes, 0, &start))
            return false;
        file_ = std::move(file);
    }
    ++count_;
    return true;
}

bool FileLock::Unlock()
{
    const std::lock_guard guard(mutex_);
    if (count_ == 0)
        return false;
    if (--count_ == 0)
    {
        // Closing alone releases the lock at some later time.
        OVERLAPPED start{};
        UnlockFileEx(file_.get(), 0, LockedBytes, 0, &start);
        file_.reset();
    }
    return true;
}

} // namespace Kestrany::Agent
