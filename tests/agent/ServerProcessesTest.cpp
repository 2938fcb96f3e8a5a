#include <gtest/gtest.h>

#include <thread>

#include <windows.h>

#include "Environment.h"
#include "platform/Base.h"
#include "platform/Folders.h"
#include "server/ServerInstance.h"
#include "server/ServerLaunch.h"
#include "server/ServerProcesses.h"
#include "support/Patience.h"

namespace Kestrany::Agent {

namespace {

constexpr std::int64_t Limit = OrlindexTest::PatienceMilliseconds;

class ServerProcessesTest : public testing::Test
{
protected:
    ~ServerProcessesTest() override { processes.Quit(identity, Limit); }

    /// A server that a failed test leaves behind ends by itself.
    bool Start(std::int64_t& processId, const std::vector<std::wstring>& arguments = {L"--quit-after", L"3600"})
    {
        return processes.Start(ServerFile(), identity, arguments, Limit, processId);
    }

    static Handle Open(std::int64_t processId)
    {
        return Handle(OpenProcess(PROCESS_ALL_ACCESS, FALSE, static_cast<DWORD>(processId)));
    }

    /// Suspends the process like one that hangs.
    static void Freeze(HANDLE process)
    {
        using Suspend = LONG(NTAPI*)(HANDLE);
        const FARPROC address = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtSuspendProcess");
        ASSERT_NE(address, nullptr);
        ASSERT_EQ(reinterpret_cast<Suspend>(reinterpret_cast<void*>(address))(process), 0);
    }

    static DWORD RunToEnd(const std::vector<std::wstring>& arguments)
    {
        std::vector<std::wstring> texts{ServerFile()};
        texts.insert(texts.end(), arguments.begin(), arguments.end());
        std::wstring line = JoinCommandLine(texts);
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION started{};
        if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr, nullptr, &startup,
                            &started))
            return MAXDWORD;
        const Handle process(started.hProcess);
        const Handle thread(started.hThread);
        DWORD code = MAXDWORD;
        if (WaitForSingleObject(process.get(), static_cast<DWORD>(Limit)) == WAIT_OBJECT_0)
            GetExitCodeProcess(process.get(), &code);
        return code;
    }

    std::string identity = OwnIdentity("Processes");
    std::string lastMessage;
    ServerProcesses processes{[this](TALIXLog::LogLevel, const std::string& message) { lastMessage = message; }};
};

TEST_F(ServerProcessesTest, ARunningServerIsNotStartedAgain)
{
    std::int64_t first = 0;
    std::int64_t second = 0;
    ASSERT_TRUE(Start(first)) << lastMessage;
    ASSERT_TRUE(Start(second)) << lastMessage;
    EXPECT_EQ(first, second);
}

TEST_F(ServerProcessesTest, ASecondServerOfTheSameIdentityEndsWithItsExitCode)
{
    std::int64_t processId = 0;
    ASSERT_TRUE(Start(processId)) << lastMessage;
    EXPECT_EQ(RunToEnd({L"--identity", *WidenStrictly(identity)}), static_cast<DWORD>(ServerAlreadyRunning));
    EXPECT_EQ(FindServer(identity), static_cast<DWORD>(processId));
    EXPECT_TRUE(IsServerReady(identity));
}

TEST_F(ServerProcessesTest, WrongArgumentsHaveAnExitCode)
{
    EXPECT_EQ(RunToEnd({L"--frob"}), static_cast<DWORD>(ServerUsage));
    EXPECT_EQ(RunToEnd({L"--version"}), static_cast<DWORD>(ServerQuit));
}

TEST_F(ServerProcessesTest, SimultaneousStartersGetTheSameServer)
{
    std::int64_t first = 0;
    std::int64_t second = 0;
    bool firstStarted = false;
    std::thread other([&] {
        const ServerProcesses own([](TALIXLog::LogLevel, const std::string&) {});
        firstStarted = own.Start(ServerFile(), identity, {L"--quit-after", L"3600"}, Limit, first);
    });
    const bool secondStarted = Start(second);
    other.join();
    EXPECT_TRUE(firstStarted);
    EXPECT_TRUE(secondStarted) << lastMessage;
    EXPECT_EQ(first, second);
}

TEST_F(ServerProcessesTest, AServerThatEndsAtStartIsAFailureWithItsCode)
{
    std::int64_t processId = -1;
    EXPECT_FALSE(Start(processId, {L"--frob"}));
    EXPECT_NE(lastMessage.find("exit code 2"), std::string::npos) << lastMessage;
    EXPECT_EQ(processId, -1);
}

TEST_F(ServerProcessesTest, AMissingServerFileIsAFailureWithTheSystemsText)
{
    std::int64_t processId = -1;
    EXPECT_FALSE(processes.Start(L"C:\\none\\Pellwick.exe", identity, {}, Limit, processId));
    EXPECT_NE(lastMessage.find("C:\\none\\Pellwick.exe"), std::string::npos) << lastMessage;
    EXPECT_EQ(lastMessage.back(), ')') << lastMessage;
}

TEST_F(ServerProcessesTest, QuittingWaitsUntilTheProcessHasEnded)
{
    std::int64_t processId = 0;
    ASSERT_TRUE(Start(processId)) << lastMessage;
    const Handle process = Open(processId);
    EXPECT_TRUE(processes.Quit(identity, Limit));
    EXPECT_EQ(WaitForSingleObject(process.get(), 0), WAIT_OBJECT_0);
    DWORD code = MAXDWORD;
    GetExitCodeProcess(process.get(), &code);
    EXPECT_EQ(code, static_cast<DWORD>(ServerQuit));
    EXPECT_FALSE(FindServer(identity));
    EXPECT_TRUE(processes.Quit(identity, Limit)) << "none runs: nothing to do";
}

TEST_F(ServerProcessesTest, AFrozenServerIsTerminatedAfterTheLimit)
{
    std::int64_t processId = 0;
    ASSERT_TRUE(Start(processId)) << lastMessage;
    const Handle process = Open(processId);
    Freeze(process.get());
    EXPECT_FALSE(processes.Quit(identity, 100));
    EXPECT_EQ(WaitForSingleObject(process.get(), static_cast<DWORD>(Limit)), WAIT_OBJECT_0);
    EXPECT_NE(lastMessage.find("terminated"), std::string::npos) << lastMessage;
}

TEST_F(ServerProcessesTest, WithoutTimeAServerIsAskedButNotTerminated)
{
    std::int64_t processId = 0;
    ASSERT_TRUE(Start(processId)) << lastMessage;
    const Handle process = Open(processId);
    Freeze(process.get());
    EXPECT_FALSE(processes.Quit(identity, 0));
    EXPECT_FALSE(processes.Quit(identity, -1));
    EXPECT_EQ(WaitForSingleObject(process.get(), 0), static_cast<DWORD>(WAIT_TIMEOUT));
    EXPECT_FALSE(processes.Quit(identity, 1));
}

TEST_F(ServerProcessesTest, AllServersOfAFileNameQuitAtOnce)
{
    // Its own name: tests that run at the same time have servers, too.
    const std::wstring file = ServerFile();
    const std::wstring name = L"Pellwick-" + std::to_wstring(GetCurrentProcessId()) + L".exe";
    const std::wstring copy = file.substr(0, file.rfind(L'\\') + 1) + name;
    ASSERT_TRUE(CopyFileW(file.c_str(), copy.c_str(), FALSE));
    std::int64_t processId = 0;
    for (const char* purpose : {"All1", "All2"})
        EXPECT_TRUE(processes.Start(copy, OwnIdentity(purpose), {L"--quit-after", L"3600"}, Limit, processId))
            << lastMessage;
    ASSERT_TRUE(Start(processId)) << lastMessage;
    EXPECT_TRUE(processes.QuitAll(name, Limit));
    EXPECT_FALSE(FindServer(OwnIdentity("All1")));
    EXPECT_FALSE(FindServer(OwnIdentity("All2")));
    EXPECT_TRUE(FindServer(identity)) << "a server of another name goes on";
    EXPECT_TRUE(DeleteFileW(copy.c_str()));
}

TEST_F(ServerProcessesTest, ACrashedServerIsNotReadyAndItsIdentityIsFree)
{
    std::int64_t processId = 0;
    ASSERT_TRUE(Start(processId)) << lastMessage;
    // Keeps the event, which is set, beyond the crash.
    const Handle ready(OpenEventW(SYNCHRONIZE, FALSE, ReadyEventName(identity).c_str()));
    ASSERT_TRUE(ready);
    const Handle process = Open(processId);
    TerminateProcess(process.get(), 9);
    WaitForSingleObject(process.get(), static_cast<DWORD>(Limit));
    EXPECT_FALSE(FindServer(identity));
    EXPECT_FALSE(IsServerReady(identity));
    std::int64_t next = 0;
    EXPECT_TRUE(Start(next)) << lastMessage;
    EXPECT_EQ(FindServer(identity), static_cast<DWORD>(next)) << "returned before the new one was ready";
}

TEST_F(ServerProcessesTest, AServerQuitsByItselfAfterItsTime)
{
    EXPECT_EQ(RunToEnd({L"--identity", *WidenStrictly(identity), L"--quit-after", L"1"}),
              static_cast<DWORD>(ServerQuit));
    EXPECT_FALSE(FindServer(identity));
}

TEST(ServerEnvironmentTest, PathsInVariablesAreFullPaths)
{
    ASSERT_TRUE(SetEnvironmentVariableW(ScenarioVariable, L"some\\scenario.json"));
    const std::wstring block = ServerEnvironment();
    SetEnvironmentVariableW(ScenarioVariable, nullptr);
    const std::wstring entry = ScenarioVariable + (L"=" + FullPath(L"some\\scenario.json"));
    EXPECT_NE(block.find(L'\0' + entry + L'\0'), std::wstring::npos);
    EXPECT_EQ(block.substr(block.size() - 2), std::wstring(2, L'\0'));
}

TEST(ServerEnvironmentTest, TheSettingsFolderIsThatOfThisProcess)
{
    const std::wstring name = SettingsFolderVariable;
    const std::wstring entry = L'\0' + name + L"=" + SettingsFolder() + L'\0';
    for (const wchar_t* const changed :
         {SettingsFolder().c_str(), L"C:\\other", L"relative", static_cast<const wchar_t*>(nullptr)})
    {
        ASSERT_TRUE(SetEnvironmentVariableW(name.c_str(), changed));
        const std::wstring block = ServerEnvironment();
        const std::size_t place = block.find(entry);
        EXPECT_NE(place, std::wstring::npos);
        EXPECT_EQ(block.find(name + L'=', place + 2), std::wstring::npos) << "named twice";
    }
    SetEnvironmentVariableW(name.c_str(), SettingsFolder().c_str());
}

TEST(ServerEnvironmentTest, OtherVariablesAreUnchanged)
{
    ASSERT_TRUE(SetEnvironmentVariableW(L"OrlindexAgentTest", L"relative\\a=b"));
    EXPECT_NE(ServerEnvironment().find(L'\0' + std::wstring(L"OrlindexAgentTest=relative\\a=b") + L'\0'),
              std::wstring::npos);
    SetEnvironmentVariableW(L"OrlindexAgentTest", nullptr);
}

} // namespace

} // namespace Kestrany::Agent
