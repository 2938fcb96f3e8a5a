#include "MachineLock.h"

#include <filesystem>
#include <stdexcept>

#include "MachineKey.h"

namespace OrlindexTest {

MachineLock::MachineLock(Kind kind) : kind_(kind)
{
    const std::filesystem::path path = std::filesystem::temp_directory_path() / "orlindex-tests.lock";
    file_.reset(CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE,
                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS, 0, nullptr));
    if (file_.get() == INVALID_HANDLE_VALUE)
        throw std::runtime_error("cannot open the lock file of the tests");
    Lock(kind);
    // The process that made a stale key has ended, or this lock would not have been granted. A process that sees the
    // key takes the exclusive lock to remove it, and then waits for its own lock again.
    while (MachineKey::Exists())
    {
        if (kind == Shared)
        {
            Unlock();
            Lock(Exclusive);
        }
        MachineKey::RemoveStale();
        if (kind == Shared)
        {
            Unlock();
            Lock(Shared);
        }
    }
}

MachineLock::~MachineLock()
{
    try
    {
        if (kind_ == Exclusive)
            MachineKey::RemoveStale();
    }
    catch (const std::exception&)
    {
        // The next process that takes the lock reports it.
    }
    Unlock();
}

void MachineLock::Lock(Kind kind) const
{
    OVERLAPPED position{};
    if (!LockFileEx(file_.get(), kind == Exclusive ? LOCKFILE_EXCLUSIVE_LOCK : 0, 0, 1, 0, &position))
        throw std::runtime_error("cannot lock the lock file of the tests");
}

void MachineLock::Unlock() const
{
    OVERLAPPED position{};
    UnlockFileEx(file_.get(), 0, 1, 0, &position);
}

} // namespace OrlindexTest
