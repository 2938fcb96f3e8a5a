// The operations for tools, behind the contract.

#include "ServerTest.h"

#include <map>
#include <thread>

#include "load/contract/ISSOClient.h"
#include "load/contract/ISSOClientPrivate.h"
#include "load/contract/ISSOServerManager.h"
#include "platform/DataProtection.h"
#include "platform/Folders.h"
#include "server/ServerProcesses.h"

namespace Kestrany::Agent {

namespace {

using namespace IdentityServices;

constexpr wchar_t NotUtf16[] = {L'a', 0xD800, L'b', 0};

/// Records events with their status.
class RecordingObserver final : public IObserver
{
public:
    void OnLoggedIn(const std::int32_t& status) override { Record("LoggedIn", status); }
    void OnLoggedOut(const std::int32_t& status) override { Record("LoggedOut", status); }
    void OnAccountCreated(const std::int32_t& status) override { Record("AccountCreated", status); }
    void OnTokenRefreshed(const std::int32_t& status) override { Record("TokenRefreshed", status); }
    void OnTokenAvailable(const std::int32_t& status) override { Record("TokenAvailable", status); }
    void OnServerChanged(const Server& server) override { Record("ServerChanged", server); }
    bool OnAboutToLogout() override { return true; }
    void OnLoginRestored() override { Record("LoginRestored", 0); }
    void OnOtherEvent(const IdServicesConsts::IdServicesEvent& event) override { Record("Other", event); }

    std::vector<std::string> calls;

private:
    void Record(const std::string& call, int number) { calls.push_back(call + " " + std::to_string(number)); }
};

class PluginPrivateTest : public testing::Test
{
protected:
    PluginPrivateTest() { client.AddObserver(&observer); }
    ~PluginPrivateTest() override
    {
        client.RemoveObserver(&observer);
        tool.ClearEventQueue();
    }

    ISSOClient& client = *PluginFactory().GetSSOClient();
    ISSOClientPrivate& tool = *PluginFactory().GetSSOClientPrivate();
    RecordingObserver observer;
};

TEST_F(PluginPrivateTest, ServersHaveNamesAndNamesHaveServers)
{
    EXPECT_STREQ(tool.ServerToServerName(TALIX_SERVER_STAGING), L"staging");
    EXPECT_STREQ(tool.ServerToServerName(TALIX_SERVER_UNAVAILABLE), L"");
    EXPECT_EQ(tool.ServerNameToServer(L"staging"), TALIX_SERVER_STAGING);
    EXPECT_EQ(tool.ServerNameToServer(L"elsewhere"), TALIX_SERVER_UNAVAILABLE);
    EXPECT_EQ(tool.ServerNameToServer(L""), TALIX_SERVER_UNAVAILABLE);
    EXPECT_EQ(tool.ServerNameToServer(nullptr), TALIX_SERVER_UNAVAILABLE);
    EXPECT_EQ(tool.ServerNameToServer(NotUtf16), TALIX_SERVER_UNAVAILABLE);
}

TEST_F(PluginPrivateTest, AReturnedTextIsValidUntilTheNextCallOnTheSameThread)
{
    const wchar_t* production = tool.ServerToServerName(TALIX_SERVER_PRODUCTION);
    std::thread([this] { tool.ServerToServerName(TALIX_SERVER_STAGING); }).join();
    tool.GetSettingsPath();
    EXPECT_STREQ(production, L"production");
}

TEST_F(PluginPrivateTest, OnlyTheUserCanDecrypt)
{
    const std::wstring encrypted = tool.Encrypt(L"secret \x00EB");
    EXPECT_EQ(encrypted.find(L"secret"), std::wstring::npos);
    EXPECT_EQ(DecryptText(encrypted), L"secret \x00EB");
    EXPECT_EQ(DecryptText(tool.Encrypt(L"")), L"");
    EXPECT_STREQ(tool.Encrypt(nullptr), L"");
    EXPECT_STREQ(tool.Encrypt(NotUtf16), L"");
}

TEST_F(PluginPrivateTest, SettingsAreInTheUsersFolder)
{
    EXPECT_EQ(tool.GetSettingsPath(), SettingsFolder());
}

TEST_F(PluginPrivateTest, EachIdentityAndServerHasItsOwnCacheFile)
{
    const std::wstring folder = tool.GetSettingsPath();
    EXPECT_EQ(tool.GetLoginStateCacheFile(L"A.b", TALIX_SERVER_STAGING), folder + L"\\A.b.staging.login");
    EXPECT_EQ(tool.GetLoginStateCacheFileWithFlag(L"A.b", TALIX_SERVER_STAGING, false),
              folder + L"\\A.b.staging.login");
    char identity[128] = "";
    PluginFactory().GetSSOServerManager()->GetSSOServerName(identity, 128);
    const std::wstring own = folder + L"\\" + std::wstring(identity, identity + std::string(identity).size());
    EXPECT_EQ(tool.GetLoginStateCacheFile(nullptr, TALIX_SERVER_PRODUCTION), own + L".production.login");
    EXPECT_EQ(tool.GetLoginStateCacheFile(L"", TALIX_SERVER_PRODUCTION), own + L".production.login");
    EXPECT_STREQ(tool.GetLoginStateCacheFile(L"A.b", TALIX_SERVER_UNAVAILABLE), L"");
    for (const wchar_t* refused : {L"..\\up", L"a/b", L"C:file", L"a b", L"-a", NotUtf16})
        EXPECT_STREQ(tool.GetLoginStateCacheFile(refused, TALIX_SERVER_STAGING), L"");
}

TEST_F(PluginPrivateTest, RaisedEventsAreQueuedWithTheirStatus)
{
    tool.RaiseEvent(IdServicesConsts::LoggedIn, true);
    tool.RaiseEvent(IdServicesConsts::TokenRefreshed, false);
    tool.RaiseEvent(IdServicesConsts::AccountCreated, true);
    tool.RaiseEvent(IdServicesConsts::ServerChanged, true);
    tool.RaiseEvent(IdServicesConsts::LoginRestored, true);
    tool.RaiseEvent(IdServicesConsts::LoginDialogTimeoutInIdIPCServer, true);
    tool.RaiseEvent(static_cast<IdServicesConsts::IdServicesEvent>(77), false);
    EXPECT_TRUE(observer.calls.empty());
    client.DispatchEvent();
    EXPECT_EQ(observer.calls, (std::vector<std::string>{"LoggedIn 1000", "TokenRefreshed 3004", "AccountCreated 1000",
                                                        "ServerChanged 0", "LoginRestored 0", "Other 9", "Other 77"}));
}

TEST_F(PluginPrivateTest, AClearedQueueHoldsNoEvent)
{
    tool.RaiseEvent(IdServicesConsts::LoggedIn, true);
    tool.ClearEventQueue();
    EXPECT_FALSE(client.HasEvent());
    client.DispatchEvent();
    EXPECT_TRUE(observer.calls.empty());
}

TEST_F(PluginPrivateTest, RetrySchedulesAreStored)
{
    ASSERT_TRUE(tool.SetOAuth2TokenRefreshRetrySchedule({9, {{10, 11}, {12, 13}}}));
    EXPECT_FALSE(tool.SetOAuth2TokenRefreshRetrySchedule({-9, {}}));
    StdUtil::RetrySchedule schedule{1, {{2, 3}}};
    tool.GetActiveOAuth2TokenRefreshRetrySchedule(schedule);
    EXPECT_EQ(schedule.limit, 9);
    ASSERT_EQ(schedule.steps.size(), 2u);
    EXPECT_EQ(schedule.steps[1].delay, 12);
    EXPECT_EQ(schedule.steps[1].tries, 13);
}

TEST_F(PluginPrivateTest, TheSessionStateIsJson)
{
    EXPECT_EQ(std::string(tool.GetSessionState()).rfind(R"({"events":0,"login":"none")", 0), 0u)
        << tool.GetSessionState();
}

class PluginProductJsonTest : public testing::Test
{
protected:
    static ProductConfig Filled(const char* lineName)
    {
        ProductConfig config;
        config.SetOAuth2ClientID("client");
        config.SetOAuth2TokenScope("openid");
        config.SetProductLineName(lineName);
        config.SetProductReleaseId("3");
        config.SetProductBuildId("3.1");
        return config;
    }

    ISSOClientPrivate& tool = *PluginFactory().GetSSOClientPrivate();
};

TEST_F(PluginProductJsonTest, AConfigurationIsWrittenAndParsed)
{
    const ProductConfig config = Filled("Zo\xC3\xAB");
    const std::string json = tool.ToJsonString(TALIX_SERVER_STAGING, &config);
    ProductConfig read;
    auto server = TALIX_SERVER_UNAVAILABLE;
    ASSERT_TRUE(tool.FromJsonString(&server, &read, json.c_str())) << json;
    EXPECT_EQ(server, TALIX_SERVER_STAGING);
    EXPECT_TRUE(tool.Equals(read, config));
}

TEST_F(PluginProductJsonTest, AMissingTextBecomesEmpty)
{
    ProductConfig config = Filled("kept?");
    auto server = TALIX_SERVER_UNAVAILABLE;
    ASSERT_TRUE(tool.FromJsonString(&server, &config, R"({"server":"production","clientId":"other"})"));
    ProductConfig other;
    other.SetOAuth2ClientID("other");
    EXPECT_TRUE(tool.Equals(config, other));
}

TEST_F(PluginProductJsonTest, BadInputChangesNothing)
{
    const ProductConfig before = Filled("before");
    ProductConfig config = before;
    auto server = TALIX_SERVER_DEVELOPMENT;
    for (const char* refused :
         {"", "{}", R"({"server":"production","clientId":"a","buildId":7})", R"({"clientId":"a","server":"elsewhere"})",
          "{\"server\":\"production\",\"buildId\":\"\xFF\"}"})
        EXPECT_FALSE(tool.FromJsonString(&server, &config, refused)) << refused;
    EXPECT_FALSE(tool.FromJsonString(&server, &config, nullptr));
    EXPECT_FALSE(tool.FromJsonString(nullptr, &config, R"({"server":"production"})"));
    EXPECT_FALSE(tool.FromJsonString(&server, nullptr, R"({"server":"production"})"));
    EXPECT_EQ(server, TALIX_SERVER_DEVELOPMENT);
    EXPECT_TRUE(tool.Equals(config, before));
}

TEST_F(PluginProductJsonTest, WithoutAJsonFormTheTextIsEmpty)
{
    ProductConfig config = Filled("line");
    EXPECT_STREQ(tool.ToJsonString(TALIX_SERVER_PRODUCTION, nullptr), "");
    EXPECT_STREQ(tool.ToJsonString(static_cast<Server>(3), &config), "");
    config.SetProductBuildId("\xFF");
    EXPECT_STREQ(tool.ToJsonString(TALIX_SERVER_PRODUCTION, &config), "");
}

TEST_F(PluginProductJsonTest, ConfigurationsAreComparedByEveryText)
{
    EXPECT_TRUE(tool.Equals(ProductConfig(), ProductConfig()));
    EXPECT_TRUE(tool.Equals(Filled("a"), Filled("a")));
    using Change = void (*)(ProductConfig&);
    for (const Change change : {Change([](ProductConfig& config) { config.SetOAuth2ClientID("x"); }),
                                Change([](ProductConfig& config) { config.SetOAuth2TokenScope("x"); }),
                                Change([](ProductConfig& config) { config.SetProductLineName("x"); }),
                                Change([](ProductConfig& config) { config.SetProductReleaseId("x"); }),
                                Change([](ProductConfig& config) { config.SetProductBuildId("x"); })})
    {
        ProductConfig changed = Filled("a");
        change(changed);
        EXPECT_FALSE(tool.Equals(Filled("a"), changed));
    }
}

/// The plugin's own server process.
class PluginPingTest : public ServerTest
{
protected:
    PluginPingTest() { ConfigureServer(identity); }

    static int Thaw(const char* request, int size, char* answer, int capacity, void* context)
    {
        lastRequest = request;
        EXPECT_EQ(lastRequest.size() + 1, static_cast<std::size_t>(size));
        EXPECT_GE(capacity, 5);
        EXPECT_EQ(context, nullptr);
        return static_cast<int>(std::string("thaw").copy(answer, 4));
    }
    static int WriteButKeep(const char*, int, char* answer, int, void*)
    {
        std::string("thaw").copy(answer, 4);
        return 0;
    }

    ISSOClientPrivate& tool = *PluginFactory().GetSSOClientPrivate();
    static inline std::string lastRequest;
};

TEST_F(PluginPingTest, ThePingAddsTheServersTexts)
{
    std::map<std::string, std::string> texts{{"own", "kept"}, {"processId", "replaced"}};
    ASSERT_TRUE(tool.Ping(texts));
    EXPECT_EQ(texts["own"], "kept");
    EXPECT_EQ(texts["processId"], std::to_string(processId));
    EXPECT_EQ(texts["identity"], identity);
    EXPECT_EQ(texts["version"], AGENT_VERSION);
    EXPECT_EQ(texts.count("uptimeMilliseconds"), 1u);
}

TEST_F(PluginPingTest, WithoutAServerThePingFails)
{
    ConfigureServer(OwnIdentity("Nobody"));
    std::map<std::string, std::string> texts;
    EXPECT_FALSE(tool.Ping(texts));
    EXPECT_TRUE(texts.empty());
    EXPECT_FALSE(tool.FreezeSSOServerProcess(nullptr));
}

TEST_F(PluginPingTest, AFrozenServerIsTerminatedAfterItsTime)
{
    ASSERT_TRUE(tool.SetKillFrozenServerTimeout(1));
    ASSERT_TRUE(tool.FreezeSSOServerProcess(nullptr));
    std::map<std::string, std::string> texts;
    EXPECT_FALSE(tool.Ping(texts));
    EXPECT_TRUE(texts.empty());
    EXPECT_TRUE(HasEnded(Limit));
    EXPECT_EQ(ExitCode(), static_cast<DWORD>(ServerFailed));
    EXPECT_FALSE(tool.Ping(texts));
}

TEST_F(PluginPingTest, TheCallbackDecidesWhetherAFrozenServerIsThawed)
{
    ASSERT_TRUE(tool.FreezeSSOServerProcess(WriteButKeep));
    EXPECT_FALSE(processes.Quit(identity, 0));
    EXPECT_FALSE(HasEnded(100)) << "still frozen";
    tool.FreezeSSOServerProcess(Thaw);
    EXPECT_EQ(lastRequest, "frozen " + std::to_string(processId));
    EXPECT_TRUE(HasEnded(Limit)) << "it was asked to quit";
}

TEST_F(PluginPingTest, AThawedServerResponds)
{
    ASSERT_TRUE(tool.FreezeSSOServerProcess(Thaw));
    std::map<std::string, std::string> texts;
    EXPECT_TRUE(tool.Ping(texts));
}

TEST_F(PluginPingTest, TheTimeIsInSeconds)
{
    ASSERT_TRUE(tool.SetKillFrozenServerTimeout(77));
    EXPECT_EQ(tool.GetKillFrozenServerTimeout(), 77);
    EXPECT_FALSE(tool.SetKillFrozenServerTimeout(-1));
    EXPECT_EQ(tool.GetKillFrozenServerTimeout(), 77);
}

} // namespace

} // namespace Kestrany::Agent
