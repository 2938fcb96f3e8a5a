// Hosts of one user at one server process: they share logins and events.

#include <gtest/gtest.h>

#include <memory>
#include <random>

#include "Environment.h"
#include "EventRecorder.h"
#include "OtherHost.h"
#include "connection/Message.h"
#include "connection/Pipe.h"
#include "connection/ServerRequests.h"
#include "identity/IdentitySource.h"
#include "identity/LoginFile.h"
#include "identity/ResultCodes.h"
#include "load/contract/ISSOClient.h"
#include "load/contract/ISSOClientModule.h"
#include "load/contract/ISSOServerManager.h"
#include "platform/AtomicFile.h"
#include "platform/Folders.h"
#include "platform/ObjectNamespace.h"
#include "server/ServerInstance.h"
#include "support/Patience.h"

#include <aclapi.h>

namespace Kestrany::Agent {

namespace {

using namespace IdentityServices;

constexpr std::int64_t Limit = OrlindexTest::PatienceMilliseconds;

/// Waits until the server has closed a connection. It sends nothing on it.
bool Ends(HANDLE pipe)
{
    char byte = 0;
    PendingOperation reading;
    reading.Read(pipe, &byte, 1);
    return !reading.Finish(pipe, Limit) && GetLastError() == ERROR_BROKEN_PIPE;
}

class SharedLoginTest : public testing::Test
{
protected:
    SharedLoginTest()
    {
        ProductConfig product;
        product.SetOAuth2ClientID("tests");
        client.SetProductConfig(TALIX_SERVER_PRODUCTION, product);
        client.AddObserver(&observer);
        module.Initialize(false);
    }
    ~SharedLoginTest() override
    {
        module.Uninitialize();
        servers.QuitSSOServerProcess(Limit);
    }

    IdErrorCode LogIn()
    {
        int detail = -1;
        return client.Login(detail);
    }

    static Handle OpenServer()
    {
        const auto id = FindServer(DefaultIdentity);
        return Handle(id ? OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, *id) : nullptr);
    }

    /// Kills the server, and waits until another one is ready. The host starts it without a call.
    static bool ReplaceServer()
    {
        const Handle ready(CreateEventW(nullptr, TRUE, FALSE, ReadyEventName(DefaultIdentity).c_str()));
        const Handle server = OpenServer();
        ResetEvent(ready.get());
        TerminateProcess(server.get(), 9);
        return WaitForSingleObject(ready.get(), static_cast<DWORD>(Limit)) == WAIT_OBJECT_0;
    }

    ISSOClient& client = *PluginFactory().GetSSOClient();
    ISSOClientModule& module = *PluginFactory().GetSSOClientModule();
    ISSOServerManager& servers = *PluginFactory().GetSSOServerManager();
    EventRecorder observer;
};

TEST_F(SharedLoginTest, FourHostsShareALoginAndItsEvents)
{
    std::vector<std::unique_ptr<OtherHost>> hosts;
    for (const char* name : {"one", "two", "three", "four"})
        hosts.push_back(std::make_unique<OtherHost>("watch", std::vector<std::string>{name}));
    for (const auto& host : hosts)
        ASSERT_TRUE(host->HasArrived());
    ASSERT_EQ(LogIn(), IdSuccess);
    int result = 0;
    ASSERT_EQ(client.Logout(result, TALIX_LOGOUT_FORCE), IdSuccess);
    for (const auto& host : hosts)
        host->Leave();
    for (const auto& host : hosts)
        EXPECT_EQ(host->ExitCode(), 0u);
    client.DispatchEvent();
    EXPECT_EQ(observer.kinds, (std::vector<std::string>{"LoggedIn", "TokenAvailable", "LoggedOut"}));
}

TEST_F(SharedLoginTest, AHostReplacesADeadServerAndTheLoginIsRestored)
{
    ASSERT_EQ(LogIn(), IdSuccess);
    client.DispatchEvent();
    observer.kinds.clear();
    ASSERT_TRUE(ReplaceServer());
    EXPECT_TRUE(client.IsLoginValid());
    client.DispatchEvent();
    EXPECT_EQ(observer.kinds, std::vector<std::string>{"LoginRestored"});
}

TEST_F(SharedLoginTest, ALaterServerHasTheDataFolderOfTheFirst)
{
    ASSERT_EQ(LogIn(), IdSuccess);
    const std::wstring& folder = SettingsFolder();
    ASSERT_TRUE(SetEnvironmentVariableW(SettingsFolderVariable, (folder + L"-other").c_str()));
    ASSERT_TRUE(servers.QuitSSOServerProcess(Limit));
    EXPECT_TRUE(client.IsLoginValid());
    SetEnvironmentVariableW(SettingsFolderVariable, folder.c_str());
}

TEST_F(SharedLoginTest, AServerThatWasAskedToQuitIsStartedOnlyByACall)
{
    ASSERT_EQ(LogIn(), IdSuccess);
    ASSERT_TRUE(servers.QuitSSOServerProcess(Limit));
    const Handle ready(CreateEventW(nullptr, TRUE, FALSE, ReadyEventName(DefaultIdentity).c_str()));
    EXPECT_EQ(WaitForSingleObject(ready.get(), 500), static_cast<DWORD>(WAIT_TIMEOUT));
    EXPECT_TRUE(client.IsLoginValid()) << "the call starts it";
    EXPECT_TRUE(FindServer(DefaultIdentity));
}

TEST_F(SharedLoginTest, WithoutAServerApplicationLoginFailsWithItsCode)
{
    module.Uninitialize();
    servers.QuitSSOServerProcess(Limit);
    servers.ConfigureServerApp(L"C:\\nowhere", L"C:\\nowhere\\Pellwick.exe");
    EXPECT_EQ(LogIn(), IdServerUnavailable);
    EXPECT_FALSE(client.IsLoggedIn());
    int result = 0;
    EXPECT_EQ(client.Logout(result, TALIX_LOGOUT_DEFAULT), IdServerUnavailable);
    EXPECT_EQ(client.ShowAccountSettings(result), IdServerUnavailable);
    EXPECT_EQ(client.SetLoginMode(TALIX_LOGIN_MODE_DEFAULT), IdServerUnavailable);
    ConfigureServer(DefaultIdentity);
    EXPECT_EQ(LogIn(), IdSuccess) << "the failure is not remembered";
}

TEST_F(SharedLoginTest, AServerOfAnotherInstallationIsNotUsed)
{
    const std::wstring copy = SettingsFolder() + L"\\Pellwick.exe";
    ASSERT_TRUE(CopyFileW(ServerFile().c_str(), copy.c_str(), FALSE));
    servers.ConfigureServerApp(SettingsFolder().c_str(), copy.c_str());
    EXPECT_EQ(LogIn(), IdServerUnavailable);
    ConfigureServer(DefaultIdentity);
    EXPECT_EQ(LogIn(), IdSuccess);
}

TEST_F(SharedLoginTest, AServerIsTheSameByEveryPathToItsFile)
{
    module.Uninitialize();
    ASSERT_TRUE(servers.QuitSSOServerProcess(Limit));
    const std::wstring& folder = SettingsFolder();
    const std::wstring file = folder + L"\\Pellwick.exe";
    const std::wstring link = folder + L"\\Link.exe";
    ASSERT_TRUE(CopyFileW(ServerFile().c_str(), file.c_str(), FALSE)) << GetLastError();
    ASSERT_TRUE(CreateHardLinkW(link.c_str(), file.c_str(), nullptr)) << GetLastError();

    servers.ConfigureServerApp(folder.c_str(), file.c_str());
    module.Initialize(false);
    ASSERT_TRUE(FindServer(DefaultIdentity));
    servers.ConfigureServerApp(folder.c_str(), link.c_str());
    EXPECT_EQ(LogIn(), IdSuccess);
    ConfigureServer(DefaultIdentity);
}

TEST_F(SharedLoginTest, ALogoutDuringAReconnectionIsAnEvent)
{
    ASSERT_EQ(LogIn(), IdSuccess);
    client.DispatchEvent();
    observer.kinds.clear();
    ASSERT_TRUE(servers.QuitSSOServerProcess(Limit));
    // As after the logout of another host at another server process.
    char name[128] = "";
    ASSERT_GT(servers.GetSSOServerName(name, sizeof name), 0);
    ASSERT_TRUE(DeleteFileW(LoginFile(name, TALIX_SERVER_PRODUCTION).c_str()));
    EXPECT_FALSE(client.IsLoggedIn());
    client.DispatchEvent();
    EXPECT_EQ(observer.kinds, std::vector<std::string>{"LoggedOut"});
}

TEST_F(SharedLoginTest, AServerThatQuitsIsNotReady)
{
    PipeClient pipe(OpenPipe(HostPipeName(DefaultIdentity), Deadline(Limit)));
    Request request;
    request.operation = Operations::Attach;
    request.caller.server = TALIX_SERVER_PRODUCTION;
    request.arguments["protocol"] = ProtocolVersion;
    request.arguments["identity"] = "Other";
    const Deadline deadline(Limit);
    ASSERT_TRUE(pipe.Write(WriteRequest(request), deadline));
    ASSERT_TRUE(pipe.Read(&deadline));
    EXPECT_TRUE(IsServerReady(DefaultIdentity));
    // It waits a short time for hosts that do not leave, like this one.
    servers.QuitSSOServerProcess(0);
    const std::optional<std::string> last = pipe.Read(&deadline);
    ASSERT_TRUE(last);
    EXPECT_TRUE(ReadServerMessage(*last)->shutdown);
    EXPECT_FALSE(IsServerReady(DefaultIdentity));
    EXPECT_TRUE(FindServer(DefaultIdentity));
    EXPECT_EQ(LogIn(), IdSuccess) << "waits for its end, and starts another";
}

TEST_F(SharedLoginTest, HostsThatConnectAsTheServerEndsAreServed)
{
    module.Uninitialize();
    ASSERT_TRUE(servers.QuitSSOServerProcess(Limit));
    const char* const arguments[] = {"--idle-after", "1"};
    servers.SetSSOServerProcessArguments(arguments, 2);
    std::mt19937 random(20'260'101); // The same sequence each time.
    for (int round = 0; round < 8; ++round)
    {
        ASSERT_EQ(LogIn(), IdSuccess) << round;
        const Handle server = OpenServer();
        module.Uninitialize();
        // Shortly before or after its end.
        WaitForSingleObject(server.get(), 990 + random() % 20);
    }
    servers.SetSSOServerProcessArguments(nullptr, 0);
}

TEST_F(SharedLoginTest, AKeyThatCannotBeReadIsNotReplaced)
{
    ASSERT_EQ(LogIn(), IdSuccess);
    wchar_t token[4096] = L"";
    ASSERT_EQ(client.GetOAuth2AccessToken(token, 4096, false), IdSuccess);
    ASSERT_TRUE(servers.QuitSSOServerProcess(Limit));
    const std::wstring file = SettingsFolder() + L"\\signing-key.protected";
    const FileContents key = ReadFileContents(file);
    ASSERT_TRUE(key.IsRead());
    std::int64_t processId = 0;
    {
        const Handle inUse =
            OwnFile(CreateFileW(file.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_TRUE(inUse);
        EXPECT_FALSE(servers.StartSSOServerProcess(Limit, processId));
    }
    ASSERT_TRUE(ReplaceFileAtomically(file, "damaged"));
    EXPECT_FALSE(servers.StartSSOServerProcess(Limit, processId));
    EXPECT_EQ(ReadFileContents(file).bytes, "damaged");
    wchar_t next[4096] = L"";
    ASSERT_TRUE(ReplaceFileAtomically(file, key.bytes));
    EXPECT_EQ(client.GetOAuth2AccessToken(next, 4096, false), IdSuccess);
    EXPECT_STREQ(next, token);
    ASSERT_TRUE(servers.QuitSSOServerProcess(Limit));
    ASSERT_TRUE(DeleteFileW(file.c_str()));
    EXPECT_EQ(client.GetOAuth2AccessToken(next, 4096, false), IdSuccess);
    EXPECT_STRNE(next, token) << "issued anew with the new key";
}

TEST_F(SharedLoginTest, AServerWithoutHostsEndsAfterItsIdleTime)
{
    module.Uninitialize();
    ASSERT_TRUE(servers.QuitSSOServerProcess(Limit));
    const char* const arguments[] = {"--idle-after", "1"};
    servers.SetSSOServerProcessArguments(arguments, 2);
    ASSERT_EQ(LogIn(), IdSuccess);
    const Handle server = OpenServer();
    ASSERT_TRUE(server);
    const Handle stranger = OpenPipe(HostPipeName(DefaultIdentity), Deadline(Limit));
    EXPECT_TRUE(stranger) << "a client that never attaches";
    EXPECT_EQ(WaitForSingleObject(server.get(), 1500), static_cast<DWORD>(WAIT_TIMEOUT)) << "a host is there";
    module.Uninitialize();
    EXPECT_EQ(WaitForSingleObject(server.get(), static_cast<DWORD>(Limit)), WAIT_OBJECT_0);
    EXPECT_TRUE(client.IsLoginValid()) << "the next one knows the login";
    servers.SetSSOServerProcessArguments(nullptr, 0);
}

TEST_F(SharedLoginTest, ACallToAFrozenServerEndsAtItsLimit)
{
    ASSERT_EQ(LogIn(), IdSuccess);
    const auto processId = FindServer(DefaultIdentity);
    ASSERT_TRUE(processId);
    ASSERT_TRUE(FreezeServer(*processId, Limit));
    const ULONGLONG start = GetTickCount64();
    talix_user_info info{};
    EXPECT_EQ(client.GetUserInfo(&info), IdServerTimedOut);
    EXPECT_LT(GetTickCount64() - start, static_cast<ULONGLONG>(Limit));
    ASSERT_TRUE(ThawServer(*processId, Limit));
    EXPECT_EQ(client.GetUserInfo(&info), IdSuccess);
}

TEST_F(SharedLoginTest, OnlyTheUserMayOpenThePipe)
{
    const Handle pipe = OpenPipe(HostPipeName(DefaultIdentity), Deadline(Limit));
    ASSERT_TRUE(pipe);
    PACL list = nullptr;
    PSID owner = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ASSERT_EQ(GetSecurityInfo(pipe.get(), SE_KERNEL_OBJECT, OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION,
                              &owner, nullptr, &list, nullptr, &descriptor),
              static_cast<DWORD>(ERROR_SUCCESS));
    ASSERT_NE(list, nullptr);
    ASSERT_EQ(list->AceCount, 1);
    void* entry = nullptr;
    ASSERT_TRUE(GetAce(list, 0, &entry));
    EXPECT_TRUE(EqualSid(&static_cast<ACCESS_ALLOWED_ACE*>(entry)->SidStart, owner));
    LocalFree(descriptor);
}

TEST_F(SharedLoginTest, AServerWhosePipeHasAnotherOwnerEndsWithoutServing)
{
    module.Uninitialize();
    ASSERT_TRUE(servers.QuitSSOServerProcess(Limit));
    const Handle squatter = CreatePipeInstance(HostPipeName(DefaultIdentity), true);
    ASSERT_TRUE(squatter);
    EXPECT_EQ(LogIn(), IdServerUnavailable) << "this process, which has the name, is not trusted";
    // Some systems create another "first" instance; the server cannot notice it there.
    std::int64_t processId = 0;
    const bool noticed = !CreatePipeInstance(HostPipeName(DefaultIdentity), true);
    EXPECT_EQ(servers.StartSSOServerProcess(Limit, processId), !noticed);
}

TEST_F(SharedLoginTest, UnattachedConnectionsKeepNoHostOut)
{
    module.Uninitialize();
    ASSERT_TRUE(servers.QuitSSOServerProcess(Limit));
    std::int64_t processId = 0;
    ASSERT_TRUE(servers.StartSSOServerProcess(Limit, processId));
    std::vector<Handle> silent;
    for (int count = 0; count < 300; ++count)
    {
        silent.push_back(OpenPipe(HostPipeName(DefaultIdentity), Deadline(Limit)));
        ASSERT_TRUE(silent.back()) << count;
    }
    EXPECT_EQ(LogIn(), IdSuccess);
    EXPECT_TRUE(client.IsLoginValid());
    EXPECT_TRUE(Ends(silent.front().get())) << "the oldest is disconnected";
}

TEST_F(SharedLoginTest, InvalidMessagesDoNotStopTheServer)
{
    ASSERT_EQ(LogIn(), IdSuccess);
    for (const std::string& bytes : {std::string("\xFF\xFF\xFF\xFFx"), std::string("\2\0\0\0{}", 6),
                                     std::string("\5\0\0\0hello", 9), std::string("\1", 1)})
    {
        const Handle pipe = OpenPipe(HostPipeName(DefaultIdentity), Deadline(Limit));
        ASSERT_TRUE(pipe);
        PendingOperation operation;
        operation.Write(pipe.get(), bytes.data(), static_cast<DWORD>(bytes.size()));
        EXPECT_TRUE(operation.Finish(pipe.get(), Limit));
        EXPECT_TRUE(client.IsLoginValid());
    }
}

} // namespace

} // namespace Kestrany::Agent
