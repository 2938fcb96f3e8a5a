// Scenario files of a real server process, seen from a host.

#include <gtest/gtest.h>

#include <fstream>
#include <future>
#include <vector>

#include "Environment.h"
#include "connection/Message.h"
#include "connection/Pipe.h"
#include "identity/IdentitySource.h"
#include "identity/ResultCodes.h"
#include "load/contract/ISSOClient.h"
#include "load/contract/ISSOClientModule.h"
#include "load/contract/ISSOServerManager.h"
#include "platform/AtomicFile.h"
#include "platform/Base.h"
#include "platform/Folders.h"
#include "platform/LogFile.h"
#include "platform/ObjectNamespace.h"
#include "plugin/ServerConnection.h"
#include "server/ServerInstance.h"
#include "support/Patience.h"

namespace Kestrany::Agent {

namespace {

using namespace IdentityServices;

constexpr std::int64_t Limit = OrlindexTest::PatienceMilliseconds;

class ScenarioTest : public testing::Test
{
protected:
    ScenarioTest()
    {
        ProductConfig product;
        product.SetOAuth2ClientID("tests");
        client.SetProductConfig(TALIX_SERVER_PRODUCTION, product);
    }
    ~ScenarioTest() override
    {
        int result = 0;
        client.Logout(result, TALIX_LOGOUT_FORCE);
        module.Uninitialize();
        servers.QuitSSOServerProcess(Limit);
        SetEnvironmentVariableW(L"PELLWICK_SCENARIO", nullptr);
    }

    void Play(const std::string& text)
    {
        Choose(text);
        module.Initialize(false);
    }
    static void Choose(const std::string& text)
    {
        const std::wstring file = SettingsFolder() + L"\\scenario.json";
        ASSERT_TRUE(ReplaceFileAtomically(file, text));
        ASSERT_TRUE(SetEnvironmentVariableW(L"PELLWICK_SCENARIO", file.c_str()));
    }
    static Request AttachRequest()
    {
        Request request;
        request.operation = Operations::Attach;
        request.caller.server = TALIX_SERVER_PRODUCTION;
        request.arguments["protocol"] = ProtocolVersion;
        request.arguments["identity"] = "Other";
        return request;
    }
    IdErrorCode LogIn()
    {
        int detail = -1;
        return client.Login(detail);
    }

    ISSOClient& client = *PluginFactory().GetSSOClient();
    ISSOClientModule& module = *PluginFactory().GetSSOClientModule();
    ISSOServerManager& servers = *PluginFactory().GetSSOServerManager();
};

TEST_F(ScenarioTest, TheUsersOfTheScenarioSignIn)
{
    Play(R"({"users": [{"userId": "7", "userName": "ann", "displayName": "Ann", "profile": {"locale": "en"}}]})");
    ASSERT_EQ(LogIn(), IdSuccess);
    char profile[1024] = "";
    int size = sizeof profile;
    ASSERT_EQ(client.GetProfileInfo(profile, &size), IdSuccess);
    EXPECT_NE(std::string(profile).find(R"("locale":"en")"), std::string::npos) << profile;
    EXPECT_NE(std::string(profile).find(R"("userName":"ann")"), std::string::npos) << profile;
}

TEST_F(ScenarioTest, ARefusedLoginIsRefused)
{
    Play(R"({"login": {"behavior": "refuse"}})");
    EXPECT_EQ(LogIn(), IdLoginRefused);
}

TEST_F(ScenarioTest, AWaitingLoginIsCancelledByALogout)
{
    Play(R"({"login": {"behavior": "wait", "waitSeconds": 60}})");
    std::future<IdErrorCode> login = std::async(std::launch::async, [this] { return LogIn(); });
    EXPECT_EQ(login.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
    EXPECT_FALSE(client.IsLoggedIn()) << "other requests get responses meanwhile";
    int result = 0;
    EXPECT_EQ(client.Logout(result, TALIX_LOGOUT_DEFAULT), IdNotLoggedIn);
    EXPECT_EQ(login.get(), IdLoginCancelled);
}

TEST_F(ScenarioTest, AWaitingLoginTimesOutWithAnEvent)
{
    Play(R"({"login": {"behavior": "wait", "waitSeconds": 1}})");
    EXPECT_EQ(LogIn(), IdLoginTimedOut);
    EXPECT_TRUE(client.HasEvent());
}

TEST_F(ScenarioTest, TokensExpireAndAreRenewed)
{
    Play(R"({"tokens": {"lifetimeSeconds": 1}})");
    ASSERT_EQ(LogIn(), IdSuccess);
    wchar_t first[4096] = L"";
    wchar_t second[4096] = L"";
    ASSERT_EQ(client.GetOAuth2AccessToken(first, 4096, true), IdSuccess);
    // Wait for the second after next: expiry is what this test is about.
    WaitForSingleObject(GetCurrentProcess(), 1100);
    EXPECT_TRUE(client.IsOAuth2TokenExpired());
    EXPECT_EQ(client.GetOAuth2AccessToken(second, 4096, false), IdTokenExpired);
    client.DispatchEvent();
    EXPECT_EQ(client.GetOAuth2AccessToken(second, 4096, true), IdSuccess);
    EXPECT_STRNE(first, second);
    EXPECT_TRUE(client.HasEvent()) << "TokenRefreshed";
}

TEST_F(ScenarioTest, FeaturesThatAreNotOfferedAreNotAvailable)
{
    Play(R"({"features": ["loginMode"]})");
    EXPECT_FALSE(client.IsApiAvailable(ApiFeatureIdToken));
    EXPECT_TRUE(client.IsApiAvailable(ApiFeatureLoginMode));
    ASSERT_EQ(LogIn(), IdSuccess);
    wchar_t token[4096] = L"";
    EXPECT_EQ(client.GetOAuth2IdToken(token, 4096), IdFeatureNotOffered);
}

TEST_F(ScenarioTest, OneCrashIsSurvivedAndTwoInARowHaveACode)
{
    Play(R"({"faults": [{"operation": "getUser", "call": 2, "effect": "crash"},
                        {"operation": "getSessionUri", "fromCall": 1, "effect": "crash"}]})");
    ASSERT_EQ(LogIn(), IdSuccess);
    talix_user_info info{};
    EXPECT_EQ(client.GetUserInfo(&info), IdSuccess);
    EXPECT_EQ(client.GetUserInfo(&info), IdSuccess) << "repeated at the next server";
    wchar_t address[2048] = L"";
    EXPECT_EQ(client.GetSessionUri(L"https://a.example", 0, address, 2048), IdServerLost);
    EXPECT_TRUE(client.IsLoginValid());
}

TEST_F(ScenarioTest, AHangEndsWithTheLimit)
{
    Play(R"({"faults": [{"operation": "getUser", "call": 1, "effect": "hang"}]})");
    ASSERT_EQ(LogIn(), IdSuccess);
    talix_user_info info{};
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(client.GetUserInfo(&info), IdServerTimedOut);
    EXPECT_GE(GetTickCount64() - start + 50, static_cast<ULONGLONG>(ServerConnection::ResponseLimit.count()));
    EXPECT_LT(GetTickCount64() - start, static_cast<ULONGLONG>(Limit));
    EXPECT_EQ(client.GetUserInfo(&info), IdSuccess);
}

TEST_F(ScenarioTest, ALatencyBeyondTheLimitsIsWaitedFor)
{
    Play(R"({"latencyMilliseconds": 11000})");
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(LogIn(), IdSuccess);
    EXPECT_GT(GetTickCount64() - start, static_cast<ULONGLONG>(ServerConnection::ResponseLimit.count()));
    // The rest of the test need not wait.
    module.Uninitialize();
    servers.QuitSSOServerProcess(Limit);
    SetEnvironmentVariableW(L"PELLWICK_SCENARIO", nullptr);
}

TEST_F(ScenarioTest, AHostWithTooMuchHeldBackIsDisconnected)
{
    Play(R"({"latencyMilliseconds": 60000, "users": [{"userId": "7", "userName": "ann", "displayName": "Ann",
             "secret": "s", "profile": {"long": ")" +
         std::string(60'000, 'x') + R"("}}]})");
    const Deadline deadline(Limit);
    PipeClient greedy(OpenPipe(HostPipeName(DefaultIdentity), deadline));
    Request request = AttachRequest();
    ASSERT_TRUE(greedy.Write(WriteRequest(request), deadline));
    ASSERT_TRUE(greedy.Read(&deadline));
    request.operation = Operations::AutomatedLogin;
    request.caller.clientId = "tests";
    request.arguments["user"] = "ann";
    request.arguments["secret"] = "s";
    ASSERT_TRUE(greedy.Write(WriteRequest(request), deadline));

    request.operation = Operations::GetUser;
    int taken = 0;
    while (taken < 200 && greedy.Write(WriteRequest(request), deadline) && greedy.Read(&deadline))
        ++taken;
    EXPECT_GT(taken, 40) << "60 KB each";
    EXPECT_LT(taken, 100) << "4 MiB are the limit";
    PipeClient other(OpenPipe(HostPipeName(DefaultIdentity), deadline));
    EXPECT_TRUE(other.Write(WriteRequest(AttachRequest()), deadline));
    EXPECT_TRUE(other.Read(&deadline));
    // The rest of the test need not wait.
    module.Uninitialize();
    servers.QuitSSOServerProcess(Limit);
    SetEnvironmentVariableW(L"PELLWICK_SCENARIO", nullptr);
}

TEST_F(ScenarioTest, AServerThatRefusesTheHostSaysWhy)
{
    Play(R"({"latencyMilliseconds": 500, "faults": [{"operation": "attach", "fromCall": 1, "result": 4321}]})");
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(static_cast<int>(LogIn()), 4321);
    EXPECT_LT(GetTickCount64() - start, static_cast<ULONGLONG>(ServerConnection::ConnectLimit.count()))
        << "another attempt would take the whole limit";
    int result = 0;
    EXPECT_EQ(static_cast<int>(client.Logout(result, TALIX_LOGOUT_DEFAULT)), 4321);
    EXPECT_EQ(static_cast<int>(client.SetLoginMode(TALIX_LOGIN_MODE_DEFAULT)), 4321);
    EXPECT_EQ(static_cast<int>(client.ShowAccountSettings(result)), 4321);
}

TEST_F(ScenarioTest, UninitializeDoesNotWaitForAConnection)
{
    Choose(R"({"faults": [{"operation": "attach", "fromCall": 1, "effect": "hang"}]})");
    const Handle ready(CreateEventW(nullptr, TRUE, FALSE, ReadyEventName(DefaultIdentity).c_str()));
    std::future<IdErrorCode> login = std::async(std::launch::async, [this] { return LogIn(); });
    ASSERT_EQ(WaitForSingleObject(ready.get(), static_cast<DWORD>(Limit)), WAIT_OBJECT_0);
    module.Uninitialize();
    EXPECT_EQ(login.get(), IdServerLost) << "IdServerTimedOut if the limit ended it";
    servers.QuitSSOServerProcess(Limit);
    SetEnvironmentVariableW(L"PELLWICK_SCENARIO", nullptr);
}

TEST_F(ScenarioTest, PendingCallsDoNotReconnectAfterUninitialize)
{
    constexpr std::size_t count = 24;
    constexpr std::size_t rounds = 20;
    constexpr auto last =
        static_cast<IdErrorCode>(4321); // Of the last login of a round: the others then wait at the server.
    std::string faults;
    for (std::size_t round = 1; round <= rounds; ++round)
        faults += (round == 1 ? "" : ", ") +
                  (R"({"operation": "login", "result": 4321, "call": )" + std::to_string(round * count) + '}');
    Choose(R"({"login": {"behavior": "wait", "waitSeconds": 60}, "faults": [)" + faults + "]}");
    for (std::size_t round = 0; round < rounds; ++round)
    {
        module.Initialize(false);
        std::promise<void> arrived;
        std::vector<std::future<IdErrorCode>> logins(count);
        for (std::future<IdErrorCode>& login : logins)
            login = std::async(std::launch::async, [&] {
                const IdErrorCode code = LogIn();
                if (code == last)
                    arrived.set_value();
                return code;
            });
        const auto all = arrived.get_future().wait_for(OrlindexTest::Patience);
        module.Uninitialize();
        ASSERT_EQ(all, std::future_status::ready);
        std::size_t lost = 0;
        for (std::future<IdErrorCode>& login : logins)
            lost += login.get() == IdServerLost ? 1 : 0;
        ASSERT_EQ(lost, count - 1) << round;
    }
}

TEST_F(ScenarioTest, AWrongFileRefusesToSignInAndTheLogSaysWhere)
{
    Play("{\n  \"login\": {\"behaviour\": \"accept\"}\n}");
    EXPECT_EQ(LogIn(), IdScenarioInvalid);
    std::ifstream log(DefaultLogFile().c_str());
    const std::string text{std::istreambuf_iterator<char>(log), std::istreambuf_iterator<char>()};
    EXPECT_NE(text.find(Narrow(SettingsFolder()) + "\\scenario.json:2:13: login.behaviour: unknown key; did you mean "
                                                   "\"behavior\"?"),
              std::string::npos);
}

TEST_F(ScenarioTest, ANamedFileThatIsMissingRefusesToSignIn)
{
    SetEnvironmentVariableW(L"PELLWICK_SCENARIO", L"C:\\none\\scenario.json");
    EXPECT_EQ(LogIn(), IdScenarioInvalid);
}

} // namespace

} // namespace Kestrany::Agent
