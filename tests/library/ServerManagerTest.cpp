// The server-process members without Initialize, and those that share an operation.

#include <future>
#include <limits>

#include "PrivateTest.h"
#include "orlindex/SSOServerManager.h"
#include "orlindex/talix.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;
using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

class ServerManagerMissing : public HostTest
{
};

TEST_F(ServerManagerMissing, EveryBooleanMemberReturnsFalseAndLeavesTheProcessIdAndTheBuffersUnchanged)
{
    std::int64_t processId = -4713;
    wchar_t buffer[] = L"unchanged";
    EXPECT_FALSE(SSOServerManager::StartSSOServerProcess(milliseconds(1), processId));
    EXPECT_FALSE(SSOServerManager::IsSSOServerProcessRunning(processId));
    EXPECT_FALSE(SSOServerManager::IsSSOServerProcessRunning());
    EXPECT_FALSE(SSOServerManager::IsSSOServerProcessReady());
    EXPECT_FALSE(SSOServerManager::QuitSSOServerProcess(milliseconds(1)));
    EXPECT_FALSE(SSOServerManager::QuitAllSSOServerProcesses(milliseconds(1)));
    EXPECT_FALSE(ManagerWithoutState().QuitAllSSOServerProcesses(1));
    SSOServerManager::GetSSOServerAppFile(buffer, 10);
    SSOServerManager::GetSSOServerAppExeFile(buffer, 10);
    EXPECT_EQ(processId, -4713);
    EXPECT_STREQ(buffer, L"unchanged");
}

using ServerProcesses = PrivateTest;

TEST_F(ServerProcesses, ATimeoutOfZeroIsPassedOnAsZeroAndNegativeCountsUnchanged)
{
    std::int64_t processId = 0;
    for (const std::int64_t count : {std::int64_t{0}, std::int64_t{-1}, std::numeric_limits<std::int64_t>::min()})
    {
        Plugin().ClearJournal();
        SSOServerManager::StartSSOServerProcess(milliseconds(count), processId);
        SSOServerManager::QuitSSOServerProcess(milliseconds(count));
        SSOServerManager::QuitAllSSOServerProcesses(milliseconds(count));
        ManagerWithoutState().QuitAllSSOServerProcesses(count);
        const std::string shown = std::to_string(count);
        EXPECT_THAT(Plugin().Calls(),
                    ElementsAre(Call(ServerManager::StartSSOServerProcess, shown + ", " + Address(&processId)),
                                Call(ServerManager::QuitSSOServerProcess, shown),
                                Call(ServerManager::QuitAllSSOServerProcesses, shown),
                                Call(ServerManager::QuitAllSSOServerProcesses, shown)));
    }
}

TEST_F(ServerProcesses, TimesAreCountedInMillisecondsWhateverTheCallerCountsIn)
{
    SSOServerManager::QuitSSOServerProcess(std::chrono::minutes(2));
    EXPECT_THAT(Plugin().Calls(), ElementsAre(Call(ServerManager::QuitSSOServerProcess, "120000")));
}

TEST_F(ServerProcesses, BothOverloadsOfIsSSOServerProcessRunningReachTheSameSlot)
{
    std::int64_t processId = 0;
    Plugin().OnCall(ServerManager::IsSSOServerProcessRunning,
                    [](const CallArguments& call) { *call.Pointer<std::int64_t>(0) += 42; });
    Plugin().Return(ServerManager::IsSSOServerProcessRunning, 1);
    EXPECT_TRUE(SSOServerManager::IsSSOServerProcessRunning());
    EXPECT_EQ(processId, 0);
    EXPECT_TRUE(SSOServerManager::IsSSOServerProcessRunning(processId));
    EXPECT_EQ(processId, 42);
    const auto calls = Plugin().Calls();
    ASSERT_THAT(calls, SizeIs(2));
    EXPECT_THAT(calls[0], StartsWith(FullName(ServerManager::IsSSOServerProcessRunning) + "(@"));
    EXPECT_EQ(calls[1], Call(ServerManager::IsSSOServerProcessRunning, Address(&processId)));
}

TEST_F(ServerProcesses, BothStartsReachTheirOwnSlots)
{
    std::int64_t processId = 0;
    const char* const texts[] = {"--first"};
    SSOClientPrivate::StartSSOServerProcess(texts, 1, milliseconds(5), processId);
    SSOServerManager::StartSSOServerProcess(milliseconds(6), processId);
    EXPECT_THAT(Plugin().Calls(), ElementsAre(Call(ServerManager::StartSSOServerProcessWithArguments,
                                                   Address(texts) + ", 1, 5, " + Address(&processId)),
                                              Call(ServerManager::StartSSOServerProcess, "6, " + Address(&processId))));
}

TEST_F(ServerProcesses, ALongWaitInThePluginBlocksOnlyItsCaller)
{
    std::promise<void> entered;
    std::promise<void> leave;
    Plugin().Return(ServerManager::QuitAllSSOServerProcesses, 1);
    Plugin().OnCall(ServerManager::QuitAllSSOServerProcesses, [&](const CallArguments&) {
        entered.set_value();
        leave.get_future().wait();
    });
    auto blocked = std::async(std::launch::async,
                              []() { return SSOServerManager::QuitAllSSOServerProcesses(milliseconds(60000)); });
    entered.get_future().wait();
    EXPECT_FALSE(SSOServerManager::IsSSOServerProcessReady());
    EXPECT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    leave.set_value();
    EXPECT_TRUE(blocked.get());
}

class QuitAllServerProcesses : public HostTest
{
protected:
    static std::string Quit(int count) { return Call(ServerManager::QuitAllSSOServerProcesses, std::to_string(count)); }
};

TEST_F(QuitAllServerProcesses, WorksBeforeInitializeAndLoadsThePlugin)
{
    InstallPlugin().Return(ServerManager::QuitAllSSOServerProcesses, 1);
    EXPECT_TRUE(ManagerWithoutState().QuitAllSSOServerProcesses(1));
    EXPECT_FALSE(IdServicesMgr::IsInitialized());
    EXPECT_EQ(Plugin().Calls().back(), Quit(1));
    EXPECT_THAT(Plugin().Calls(Module::Interface), IsEmpty()) << "the plugin is loaded, not started";
}

TEST_F(QuitAllServerProcesses, WorksAfterTheLastUninitializeAndLoadsThePluginAgain)
{
    InstallPlugin().Return(ServerManager::QuitAllSSOServerProcesses, 1);
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_TRUE(IdServicesMgr::GetInstance()->QuitAllSSOServerProcesses(1));
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    Plugin().ClearJournal();
    EXPECT_TRUE(ManagerWithoutState().QuitAllSSOServerProcesses(2));
    EXPECT_THAT(Plugin().Calls(FactoryFunction), SizeIs(1));
    EXPECT_EQ(Plugin().Calls().back(), Quit(2));
    EXPECT_FALSE(IdServicesMgr::IsInitialized());
}

TEST_F(QuitAllServerProcesses, AfterTheLastUninitializeWithoutPluginReturnsFalse)
{
    // The file of a loaded module cannot be removed, but what leads to it can.
    InstallPlugin().Return(ServerManager::QuitAllSSOServerProcesses, 1);
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    installation.WriteCompatibilityFile(std::vector<CompatibilityEntry>());
    Plugin().ClearJournal();
    EXPECT_FALSE(ManagerWithoutState().QuitAllSSOServerProcesses(2));
    EXPECT_THAT(Plugin().Calls(), IsEmpty());
}

TEST_F(QuitAllServerProcesses, TheFlatFunctionWidensItsIntWithItsSign)
{
    InstallPlugin().Return(ServerManager::QuitAllSSOServerProcesses, 1);
    EXPECT_EQ(talix_quit_server_process(-1), IdNotInitialized);
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    Plugin().ClearJournal();
    for (const int count : {-1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max(), 0})
    {
        Plugin().ClearJournal();
        EXPECT_EQ(talix_quit_server_process(count), IdSuccess);
        EXPECT_THAT(Plugin().Calls(), ElementsAre(Quit(count)));
    }
    Plugin().Return(ServerManager::QuitAllSSOServerProcesses, 0);
    EXPECT_EQ(talix_quit_server_process(1), IdServerQuitFailed);
}

} // namespace OrlindexTest
