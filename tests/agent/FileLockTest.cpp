#include <gtest/gtest.h>

#include <future>

#include "Environment.h"
#include "OtherHost.h"
#include "identity/LoginFile.h"
#include "load/contract/ISSOClientPrivate.h"
#include "platform/FileLock.h"
#include "platform/Folders.h"
#include "support/Patience.h"

namespace Kestrany::Agent {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

class FileLockTest : public testing::Test
{
protected:
    ~FileLockTest() override { DeleteFileW(file.c_str()); }

    /// Another handle stands for another process: locks belong to handles.
    bool IsLocked() const
    {
        const Handle other = OwnFile(CreateFileW(file.c_str(), GENERIC_READ | GENERIC_WRITE,
                                                 FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                                 OPEN_ALWAYS, 0, nullptr));
        OVERLAPPED start{};
        return !LockFileEx(other.get(), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &start);
    }

    const std::string name = OwnIdentity("FileLock");
    const std::wstring file = DataFolder() + L"\\" + std::wstring(name.begin(), name.end());
    FileLock lock;
};

TEST_F(FileLockTest, AProcessUnlocksAsOftenAsItLocked)
{
    ASSERT_TRUE(lock.Lock(file));
    EXPECT_TRUE(std::async(std::launch::async, [&] { return lock.Lock(file); }).get()) << "on any thread";
    EXPECT_TRUE(lock.Unlock());
    EXPECT_TRUE(IsLocked());
    EXPECT_TRUE(lock.Unlock());
    EXPECT_FALSE(IsLocked());
    EXPECT_FALSE(lock.Unlock()) << "it was not held";
}

TEST_F(FileLockTest, AFileThatCannotBeCreatedIsNotLocked)
{
    EXPECT_FALSE(lock.Lock(L"C:\\a|b\\lock"));
    EXPECT_FALSE(lock.Unlock());
    EXPECT_FALSE(lock.Lock(L""));
}

/// The plugin's lock, between two processes.
class LoginStateLockTest : public testing::Test
{
protected:
    ~LoginStateLockTest() override { tool.UnlockLoginStateFile(); }

    std::future<void> LockOnAnotherThread()
    {
        return std::async(std::launch::async, [this] { tool.LockLoginStateFile(); });
    }

    IdentityServices::ISSOClientPrivate& tool = *PluginFactory().GetSSOClientPrivate();
};

TEST_F(LoginStateLockTest, AnotherProcessWaitsUntilTheLockIsReleased)
{
    const OtherHost other("lock", {"Kestrany.TALIX.DefaultServer-v2"});
    ASSERT_TRUE(other.HasArrived());
    const std::future<void> locked = LockOnAnotherThread();
    EXPECT_EQ(locked.wait_for(milliseconds(100)), std::future_status::timeout);
    other.Leave();
    EXPECT_EQ(locked.wait_for(OrlindexTest::Patience), std::future_status::ready);
    EXPECT_EQ(other.ExitCode(), 0u);
}

TEST_F(LoginStateLockTest, TheLockOfAProcessThatDiedIsReleased)
{
    const OtherHost other("lock", {"Kestrany.TALIX.DefaultServer-v2"});
    ASSERT_TRUE(other.HasArrived());
    const std::future<void> locked = LockOnAnotherThread();
    EXPECT_EQ(locked.wait_for(milliseconds(100)), std::future_status::timeout);
    other.Kill();
    EXPECT_EQ(locked.wait_for(OrlindexTest::Patience), std::future_status::ready);
}

TEST_F(LoginStateLockTest, EachServerHasItsOwnLock)
{
    const OtherHost other("lock", {OwnIdentity("OtherServer")});
    ASSERT_TRUE(other.HasArrived());
    EXPECT_EQ(LockOnAnotherThread().wait_for(OrlindexTest::Patience), std::future_status::ready);
    other.Leave();
    EXPECT_EQ(other.ExitCode(), 0u);
}

TEST(LoginLockFileTest, AnInvalidIdentityHasNoLockFile)
{
    EXPECT_EQ(LoginLockFile("a"), SettingsFolder() + L"\\a.lock");
    for (const char* const name : {"", "..\\a", "a/b", "-a"})
        EXPECT_EQ(LoginLockFile(name), L"") << name;
}

} // namespace

} // namespace Kestrany::Agent
