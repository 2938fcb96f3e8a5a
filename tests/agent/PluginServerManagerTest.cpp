#include <gtest/gtest.h>

#include <string>

#include "Environment.h"
#include "load/contract/ISSOServerManager.h"
#include "server/ServerInstance.h"
#include "support/Patience.h"

namespace Kestrany::Agent {

namespace {

constexpr std::int64_t Limit = OrlindexTest::PatienceMilliseconds;
constexpr const char* quitAfterAnHour[] = {"--quit-after", "3600"};

class PluginServerManagerTest : public testing::Test
{
protected:
    PluginServerManagerTest()
    {
        ConfigureServer(OwnIdentity("Manager"));
        // A server that a failed test leaves behind ends by itself.
        manager.SetSSOServerProcessArguments(quitAfterAnHour, 2);
    }
    ~PluginServerManagerTest() override
    {
        manager.QuitSSOServerProcess(Limit);
        manager.SetSSOServerProcessArguments(nullptr, 0);
        ConfigureServer(DefaultIdentity);
    }

    IdentityServices::ISSOServerManager& manager = *PluginFactory().GetSSOServerManager();
};

TEST_F(PluginServerManagerTest, AServerIsStartedFoundAndQuit)
{
    std::int64_t started = 0;
    std::int64_t running = -1;
    EXPECT_FALSE(manager.IsSSOServerProcessRunning(running));
    EXPECT_EQ(running, -1);
    EXPECT_FALSE(manager.IsSSOServerProcessReady());
    ASSERT_TRUE(manager.StartSSOServerProcess(Limit, started));
    EXPECT_TRUE(manager.IsSSOServerProcessReady());
    EXPECT_TRUE(manager.IsSSOServerProcessRunning(running));
    EXPECT_EQ(running, started);
    EXPECT_TRUE(manager.QuitSSOServerProcess(Limit));
    EXPECT_FALSE(manager.IsSSOServerProcessRunning(running));
    EXPECT_FALSE(manager.IsSSOServerProcessReady());
}

TEST_F(PluginServerManagerTest, StoredArgumentsReachTheServer)
{
    const char* const arguments[] = {"--no-such-option"};
    manager.SetSSOServerProcessArguments(arguments, 1);
    std::int64_t processId = -1;
    EXPECT_FALSE(manager.StartSSOServerProcess(Limit, processId)) << "the server takes no such argument";
    EXPECT_TRUE(manager.StartSSOServerProcessWithArguments(quitAfterAnHour, 2, Limit, processId));
}

TEST_F(PluginServerManagerTest, ArgumentsAreReturnedIfAllFit)
{
    constexpr std::size_t ArgumentCapacity = 1024;
    char buffers[3][ArgumentCapacity] = {"untouched", "untouched", "untouched"};
    char* read[] = {buffers[0], buffers[1], buffers[2]};
    char* lacking[] = {buffers[0], buffers[1], nullptr};
    EXPECT_FALSE(manager.GetSSOServerProcessArguments(read, 1));
    EXPECT_FALSE(manager.GetSSOServerProcessArguments(lacking, 3));
    EXPECT_STREQ(read[0], "untouched");
    EXPECT_FALSE(manager.GetSSOServerProcessArguments(nullptr, 2));
    EXPECT_FALSE(manager.GetSSOServerProcessArguments(read, -1));
    ASSERT_TRUE(manager.GetSSOServerProcessArguments(read, 3));
    EXPECT_STREQ(read[0], "--quit-after");
    EXPECT_STREQ(read[1], "3600");
    EXPECT_STREQ(read[2], "");

    const std::string tooLong(ArgumentCapacity, 'x');
    const char* const setTooLong[] = {tooLong.c_str()};
    manager.SetSSOServerProcessArguments(setTooLong, 1);
    EXPECT_FALSE(manager.GetSSOServerProcessArguments(read, 3));
    EXPECT_STREQ(read[0], "--quit-after");
}

TEST_F(PluginServerManagerTest, ArgumentsWithAnErrorAreAllRefused)
{
    const char* const faulty[] = {"--quit-after", nullptr};
    const char* const notUtf8[] = {"\xFF"};
    std::int64_t processId = -1;
    EXPECT_FALSE(manager.StartSSOServerProcessWithArguments(faulty, 2, Limit, processId));
    EXPECT_FALSE(manager.StartSSOServerProcessWithArguments(notUtf8, 1, Limit, processId));
    EXPECT_FALSE(manager.StartSSOServerProcessWithArguments(nullptr, 1, Limit, processId));
    EXPECT_FALSE(manager.StartSSOServerProcessWithArguments(faulty, -1, Limit, processId));
    EXPECT_EQ(processId, -1);
    manager.SetSSOServerProcessArguments(nullptr, 0);
    manager.SetSSOServerProcessArguments(faulty, 2);
    EXPECT_TRUE(manager.GetSSOServerProcessArguments(nullptr, 0)) << "none are stored";
}

TEST_F(PluginServerManagerTest, FileNamesFitTheirBufferOrLeaveItUntouched)
{
    const std::wstring file = ServerFile();
    std::wstring buffer(file.size() + 1, L'?');
    manager.GetSSOServerAppExeFile(buffer.data(), static_cast<int>(file.size()));
    manager.GetSSOServerAppFile(buffer.data(), -1);
    manager.GetSSOServerAppFile(nullptr, 100);
    EXPECT_EQ(buffer, std::wstring(file.size() + 1, L'?'));
    manager.GetSSOServerAppExeFile(buffer.data(), static_cast<int>(file.size() + 1));
    EXPECT_STREQ(buffer.c_str(), file.c_str());
    buffer.assign(file.size() + 1, L'?');
    manager.GetSSOServerAppFile(buffer.data(), static_cast<int>(file.size() + 1));
    EXPECT_STREQ(buffer.c_str(), file.c_str());
}

TEST_F(PluginServerManagerTest, ABareExecutableNameIsInTheLocation)
{
    manager.ConfigureServerApp(L"C:\\Somewhere", L"Pellwick.exe");
    wchar_t buffer[64] = L"";
    manager.GetSSOServerAppExeFile(buffer, 64);
    EXPECT_STREQ(buffer, L"C:\\Somewhere\\Pellwick.exe");
}

TEST_F(PluginServerManagerTest, WithoutAServerApplicationNothingStarts)
{
    manager.ConfigureServerApp(nullptr, nullptr);
    std::int64_t processId = -1;
    EXPECT_FALSE(manager.StartSSOServerProcess(Limit, processId));
    EXPECT_EQ(processId, -1);
}

TEST_F(PluginServerManagerTest, NamesThatCannotNameAServerChangeNothing)
{
    manager.SetServerIdentityName("Tests.Server");
    for (const char* refused : {"", "a\\b", "a b", "-a", "\xC3\xAB"})
        manager.SetServerIdentityName(refused);
    manager.SetServerIdentityName(nullptr);
    manager.SetServerIdentityName(std::string(121, 'a').c_str());
    char name[32] = "";
    EXPECT_EQ(manager.GetSSOServerName(name, 32), 12);
    EXPECT_STREQ(name, "Tests.Server");
    EXPECT_EQ(manager.GetSSOEventServerName(name, 32), 19);
    EXPECT_STREQ(name, "Tests.Server.Events");
    EXPECT_EQ(manager.GetSSOServerName(name, 12), 0);
    EXPECT_EQ(manager.GetSSOServerName(nullptr, 12), 0);
    EXPECT_STREQ(name, "Tests.Server.Events");
    manager.SetServerIdentityName("Kestrany.TALIX.DefaultServer-v2");
}

} // namespace

} // namespace Kestrany::Agent
