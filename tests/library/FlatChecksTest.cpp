// Which check decides if a call is wrong in more than one way, and the differences between similar functions.

#include <cstring>

#include "FlatFunctions.h"
#include "FlatTest.h"

namespace OrlindexTest {

using Kestrany::IdentityServices::ApiFeatureIdToken;
using Kestrany::IdentityServices::ApiFeatureLoginMode;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

talix_status_code SetProxy(const char* host, std::int32_t size, std::int32_t port)
{
    talix_proxy_info info{};
    info.host = const_cast<char*>(host);
    info.host_size = size;
    info.port = port;
    return talix_set_proxy_info(&info);
}

talix_status_code GetProxy(const char* host, std::int32_t port)
{
    talix_proxy_info info{};
    return talix_get_proxy_info(&info, host, port);
}

talix_status_code GetSession(const char* uri, char* text, std::int32_t size)
{
    talix_buffer record{text, size};
    return talix_get_session_uri(uri, 0, &record);
}

} // namespace

// Before init: which functions look at their arguments first.

TEST_F(FlatNotInitialized, HasProxyInfoChecksInitializationBeforeThePort)
{
    EXPECT_EQ(talix_has_proxy_info("host", 0), IdNotInitialized);
}

TEST_F(FlatNotInitialized, GetProxyInfoAndSetProxyInfoCheckTheirArgumentsBeforeInitialization)
{
    EXPECT_EQ(talix_get_proxy_info(nullptr, "host", 0), IdInvalidProxyRecord);
    EXPECT_EQ(GetProxy("host", 0), IdInvalidProxyPort);
    EXPECT_EQ(GetProxy("host", 1), IdNotInitialized);
    EXPECT_EQ(talix_set_proxy_info(nullptr), IdInvalidProxyRecord);
    EXPECT_EQ(SetProxy("", 8, 0), IdInvalidProxyHost);
    EXPECT_EQ(SetProxy("host", 8, 0), IdInvalidProxyPort);
    EXPECT_EQ(SetProxy("host", 8, 1), IdNotInitialized);
}

TEST_F(FlatNotInitialized, NullRecordsAreReportedBeforeInitialization)
{
    EXPECT_EQ(talix_get_token(nullptr), IdFailed);
    EXPECT_EQ(talix_get_token_blocking(nullptr), IdFailed);
    EXPECT_EQ(talix_get_id_token(nullptr), IdFailed);
    EXPECT_EQ(talix_get_user_info(nullptr), IdFailed);
    talix_user_info nothingWanted{};
    EXPECT_EQ(talix_get_user_info(&nothingWanted), IdFailed);
    EXPECT_EQ(talix_get_profile_info(nullptr), IdInvalidProfileRecord);
    EXPECT_EQ(talix_set_host(nullptr), IdInvalidHostWindow);
}

TEST_F(FlatNotInitialized, GetSessionUriChecksItsArgumentsBeforeInitialization)
{
    char text[8];
    EXPECT_EQ(GetSession(nullptr, text, 8), IdFailed);
    EXPECT_EQ(GetSession("uri", nullptr, 8), IdFailed);
    EXPECT_EQ(GetSession("uri", text, 0), IdFailed);
    EXPECT_EQ(talix_get_session_uri("uri", 0, nullptr), IdFailed);
    EXPECT_EQ(GetSession("uri", text, 8), IdNotInitialized);
    EXPECT_EQ(GetSession("", text, -1), IdNotInitialized);
}

TEST_F(FlatNotInitialized, SetProductConfigDoesNotReadTheHandle)
{
    EXPECT_EQ(talix_set_product_config(TALIX_SERVER_PRODUCTION, nullptr), IdNotInitialized);
}

TEST_F(FlatNotInitialized, GetServerAndGetEnvironmentBeforeInitReturnMinusOne)
{
    EXPECT_EQ(talix_get_server(), -1);
    EXPECT_EQ(talix_get_environment(), -1);
}

TEST_F(FlatNotInitialized, SetProcessIdReturnsNotSupportedEvenBeforeInit)
{
    EXPECT_EQ(talix_set_process_id(0), IdNotSupported);
    EXPECT_EQ(talix_set_process_id(-1), IdNotSupported);
}

TEST_F(FlatNotInitialized, CreateProductConfigReturnsNull)
{
    EXPECT_EQ(talix_create_product_config("client", "scope"), nullptr);
}

TEST_F(FlatNotInitialized, DeinitWithoutInitReturnsSuccess)
{
    EXPECT_EQ(talix_deinit(), IdSuccess);
    EXPECT_EQ(talix_get_boolean(TALIX_KEY_INITIALIZED), 0);
}

// Without client.

TEST_F(FlatWithoutClient, UserInfoAndTheSessionAddressReturnFailedAndOthersClientUnavailable)
{
    FlatArguments arguments;
    EXPECT_EQ(talix_get_user_info(&arguments.userInfo), IdFailed);
    EXPECT_EQ(talix_get_session_uri("uri", 0, &arguments.buffer), IdFailed);
    EXPECT_EQ(talix_get_profile_info(&arguments.buffer), IdClientUnavailable);
    EXPECT_EQ(talix_get_token(&arguments.buffer), IdClientUnavailable);
}

TEST_F(FlatWithoutClient, SetHostReturnsSuccess)
{
    int window = 0;
    EXPECT_EQ(talix_set_host(&window), IdSuccess);
    EXPECT_EQ(talix_set_host(nullptr), IdInvalidHostWindow);
}

TEST_F(FlatWithoutClient, HasProxyInfoChecksThePortBeforeTheClient)
{
    EXPECT_EQ(talix_has_proxy_info("host", 0), IdInvalidProxyPort);
    EXPECT_EQ(talix_has_proxy_info("host", 1), IdClientUnavailable);
}

TEST_F(FlatWithoutClient, GetBooleanOfTheExpiredTokenReturnsTrue)
{
    EXPECT_EQ(talix_get_boolean(TALIX_KEY_TOKEN_EXPIRED), 1);
}

TEST_F(FlatWithoutClient, AnAccessTokenBufferThatIsTooSmallReplacesClientUnavailable)
{
    char text[] = "x";
    talix_buffer record{text, 0};
    EXPECT_EQ(talix_get_token(&record), IdBufferTooSmall);
    EXPECT_STREQ(text, "x");
}

// Features.

using FlatFeatures = FlatTest;

TEST_F(FlatFeatures, WithoutTheFeatureTheIdTokenIsUnavailableAndTheBufferUntouched)
{
    Plugin().Return(Client::IsApiAvailable, 0);
    FlatArguments arguments;
    EXPECT_EQ(talix_get_id_token(&arguments.buffer), IdApiUnavailable);
    EXPECT_STREQ(arguments.text, "untouched");
    EXPECT_THAT(Plugin().Calls(), ElementsAre(Call(Client::IsApiAvailable, std::to_string(ApiFeatureIdToken))));
}

TEST_F(FlatFeatures, WithoutTheFeatureTheLoginModeIsUnavailable)
{
    Plugin().Return(Client::IsApiAvailable, 0);
    EXPECT_EQ(talix_set_login_mode(TALIX_LOGIN_MODE_BROWSER), IdApiUnavailable);
    EXPECT_THAT(Plugin().Calls(), ElementsAre(Call(Client::IsApiAvailable, std::to_string(ApiFeatureLoginMode))));
}

// Proxies.

using FlatProxy = FlatTest;

TEST_F(FlatProxy, PortsAreCheckedAgainstBothEndsOfTheirRange)
{
    for (const std::int32_t port : {0, -1, 65536, -2147483647 - 1, 2147483647})
    {
        EXPECT_EQ(talix_has_proxy_info("host", port), IdInvalidProxyPort) << port;
        EXPECT_EQ(GetProxy("host", port), IdInvalidProxyPort) << port;
        EXPECT_EQ(SetProxy("host", 5, port), IdInvalidProxyPort) << port;
    }
    EXPECT_THAT(Plugin().Calls(), IsEmpty());
    for (const std::int32_t port : {1, 65535})
    {
        EXPECT_EQ(talix_has_proxy_info("host", port), IdSuccess) << port;
        EXPECT_EQ(GetProxy("host", port), IdSuccess) << port;
        EXPECT_EQ(SetProxy("host", 5, port), IdSuccess) << port;
    }
    EXPECT_THAT(Plugin().Calls(), testing::SizeIs(6));
}

TEST_F(FlatProxy, WithoutAHostThePortIsNotChecked)
{
    EXPECT_EQ(talix_has_proxy_info(nullptr, 0), IdSuccess);
    EXPECT_EQ(talix_has_proxy_info("", 70000), IdSuccess);
    EXPECT_EQ(GetProxy(nullptr, -1), IdSuccess);
    EXPECT_EQ(GetProxy("", 0), IdSuccess);
    const auto calls = Plugin().Calls();
    ASSERT_EQ(calls.size(), 4U);
    EXPECT_EQ(calls[0], Call(Client::HasProxyInfo, "null, 0"));
    EXPECT_EQ(calls[1], Call(Client::HasProxyInfo, "\"\", 70000"));
    EXPECT_THAT(calls[2], testing::StartsWith(FullName(Client::GetProxyInfo) + "(null, 4294967295, "));
}

TEST_F(FlatProxy, SetProxyInfoNeedsAHost)
{
    EXPECT_EQ(talix_set_proxy_info(nullptr), IdInvalidProxyRecord);
    EXPECT_EQ(SetProxy(nullptr, 8, 0), IdInvalidProxyHost) << "the host is checked before the port";
    EXPECT_EQ(SetProxy("host", 0, 3128), IdInvalidProxyHost);
    EXPECT_EQ(SetProxy("", 8, 3128), IdInvalidProxyHost);
    EXPECT_THAT(Plugin().Calls(), IsEmpty());
    EXPECT_EQ(SetProxy("host", -1, 3128), IdSuccess) << "only a size of 0 is refused";
}

TEST_F(FlatProxy, GetProxyInfoChecksTheRecordBeforeThePort)
{
    EXPECT_EQ(talix_get_proxy_info(nullptr, "host", 0), IdInvalidProxyRecord);
}

// User, profile and window.

using FlatUser = FlatTest;

TEST_F(FlatUser, OneAttributeWithABufferAndASizeIsEnough)
{
    char text[8];
    const struct
    {
        char* talix_user_info::* buffer;
        std::int32_t talix_user_info::* size;
    } attributes[] = {
        {&talix_user_info::user_id, &talix_user_info::user_id_size},
        {&talix_user_info::user_name, &talix_user_info::user_name_size},
        {&talix_user_info::first_name, &talix_user_info::first_name_size},
        {&talix_user_info::last_name, &talix_user_info::last_name_size},
        {&talix_user_info::email, &talix_user_info::email_size},
        {&talix_user_info::display_name, &talix_user_info::display_name_size},
    };
    for (const auto& attribute : attributes)
    {
        talix_user_info info{};
        info.*attribute.buffer = text;
        EXPECT_EQ(talix_get_user_info(&info), IdFailed) << "a buffer without a size";
        info.*attribute.size = -1;
        EXPECT_EQ(talix_get_user_info(&info), IdSuccess) << "only a size of 0 is refused";
        info.*attribute.size = 1;
        EXPECT_EQ(talix_get_user_info(&info), IdSuccess);
        info.*attribute.buffer = nullptr;
        EXPECT_EQ(talix_get_user_info(&info), IdFailed) << "a size without a buffer";
    }
    EXPECT_THAT(Plugin().Calls(), testing::SizeIs(12));
}

TEST_F(FlatUser, ABufferAndASizeOfDifferentAttributesAreNotEnough)
{
    char text[8];
    talix_user_info info{};
    info.reserved = -1;
    info.user_id = text;
    info.email_size = 8;
    EXPECT_EQ(talix_get_user_info(&info), IdFailed);
}

TEST_F(FlatUser, WhatThePluginWritesIntoTheUserRecordArrives)
{
    Plugin().OnCall(Client::GetUserInfo, [](const CallArguments& call) {
        std::strcpy(call.Pointer<talix_user_info>(0)->email, "a@b.c");
        call.Pointer<talix_user_info>(0)->reserved = 7;
    });
    char text[8] = "";
    talix_user_info info{};
    info.email = text;
    info.email_size = sizeof text;
    EXPECT_EQ(talix_get_user_info(&info), IdSuccess);
    EXPECT_STREQ(text, "a@b.c");
    EXPECT_EQ(info.reserved, 7);
}

TEST_F(FlatUser, TheProfileRecordIsPassedOnUnchecked)
{
    talix_buffer record{nullptr, 0};
    Plugin().OnCall(Client::GetProfileInfo, [](const CallArguments& call) { *call.Pointer<int>(1) = 4711; });
    EXPECT_EQ(talix_get_profile_info(&record), IdSuccess);
    EXPECT_EQ(record.size, 4711) << "the plugin reports the size that it needs";
    record.size = -1;
    EXPECT_EQ(talix_get_profile_info(&record), IdSuccess);
    const std::string seen = Call(Client::GetProfileInfo, Address(nullptr) + ", " + Address(&record.size));
    EXPECT_THAT(Plugin().Calls(), ElementsAre(seen, seen));
}

TEST_F(FlatUser, TheProfileAndTheProductConfigurationAlsoNeedTheInstance)
{
    // While the first init is still under way, the library counts as initialized and the instance is not there yet.
    ASSERT_EQ(talix_deinit(), IdSuccess);
    FlatArguments arguments;
    std::vector<int> results;
    Plugin().OnCall(Module::Initialize, [&](const CallArguments&) {
        results = {talix_get_profile_info(&arguments.buffer), talix_get_user_info(&arguments.userInfo),
                   talix_get_boolean(TALIX_KEY_INITIALIZED), talix_get_boolean(TALIX_KEY_TOKEN_EXPIRED)};
        EXPECT_EQ(talix_create_product_config("client", "scope"), nullptr);
    });
    Plugin().Return(Client::IsOAuth2TokenExpired, 1);
    ASSERT_EQ(talix_init(), IdSuccess);
    EXPECT_THAT(results, ElementsAre(IdNotInitialized, IdSuccess, 1, 0));
    EXPECT_EQ(talix_get_profile_info(&arguments.buffer), IdSuccess);
    EXPECT_EQ(talix_get_boolean(TALIX_KEY_TOKEN_EXPIRED), 1);
    EXPECT_NE(talix_create_product_config("client", "scope"), nullptr);
}

TEST_F(FlatUser, GetBooleanOfUnknownKeysReturnsFalseWhetherOrNotAUserIsLoggedIn)
{
    for (const int loggedIn : {0, 1})
    {
        for (const PluginOperation& operation :
             {Client::IsLoggedIn, Client::IsOAuth2TokenExpired, Client::IsLoginValid})
            Plugin().Return(operation, loggedIn);
        for (const std::int32_t key : {0, 5, -1, 256, 2147483647})
            EXPECT_EQ(talix_get_boolean(key), 0) << key;
    }
}

TEST_F(FlatUser, TheTimeLimitOfQuitServerProcessIsWidenedWithItsSign)
{
    Plugin().Return(ServerManager::QuitAllSSOServerProcesses, 1);
    EXPECT_EQ(talix_quit_server_process(2147483647), IdSuccess);
    EXPECT_EQ(talix_quit_server_process(-1), IdSuccess);
    EXPECT_THAT(Plugin().Calls(), ElementsAre(Call(ServerManager::QuitAllSSOServerProcesses, "2147483647"),
                                              Call(ServerManager::QuitAllSSOServerProcesses, "-1")));
}

// Start and stop.

using FlatStartStop = FlatTest;

TEST_F(FlatStartStop, InitAndDeinitAreCounted)
{
    EXPECT_EQ(talix_init(), IdSuccess);
    EXPECT_EQ(talix_deinit(), IdSuccess);
    EXPECT_EQ(talix_get_boolean(TALIX_KEY_INITIALIZED), 1);
    EXPECT_THAT(Plugin().Calls(), IsEmpty());
    EXPECT_EQ(talix_deinit(), IdSuccess);
    EXPECT_EQ(talix_get_boolean(TALIX_KEY_INITIALIZED), 0);
    EXPECT_THAT(Plugin().Calls(), ElementsAre(Call(Module::Uninitialize)));
}

TEST_F(FlatStartStop, APluginThatThrowsWhileItStartsIsAFailure)
{
    ASSERT_EQ(talix_deinit(), IdSuccess);
    Plugin().OnCall(Module::Initialize, [](const CallArguments&) { throw 1; });
    EXPECT_EQ(talix_init(), IdFailed);
    EXPECT_EQ(talix_get_boolean(TALIX_KEY_INITIALIZED), 0);
    EXPECT_EQ(IdServicesMgr::GetInstance(), nullptr);
    Plugin().OnCall(Module::Initialize, [](const CallArguments&) {});
    EXPECT_EQ(talix_init(), IdSuccess) << "neither count nor lock was left behind";
    EXPECT_EQ(talix_deinit(), IdSuccess);
    EXPECT_EQ(talix_get_boolean(TALIX_KEY_INITIALIZED), 0);
}

TEST_F(FlatStartStop, APluginThatThrowsWhileItStopsIsAFailureAndTheLibraryIsStopped)
{
    Plugin().OnCall(Module::Uninitialize, [](const CallArguments&) { throw 1; });
    EXPECT_EQ(talix_deinit(), IdFailed);
    EXPECT_EQ(talix_get_boolean(TALIX_KEY_INITIALIZED), 0);
    Plugin().OnCall(Module::Uninitialize, [](const CallArguments&) {});
    Plugin().ClearJournal();
    EXPECT_EQ(talix_init(), IdSuccess);
    EXPECT_EQ(Plugin().Calls(FactoryFunction).size(), 1U) << "the start begins anew";
    EXPECT_EQ(talix_login(), IdSuccess);
}

class FlatFailedStart : public HostTest
{
};

TEST_F(FlatFailedStart, APluginThatThrowsWhileItIsLoadedIsUnavailable)
{
    PluginControl& plugin = InstallPlugin();
    for (const PluginOperation& getter : {Factory::GetSSOClientModule, Factory::GetSSOClient,
                                          Factory::GetSSOClientPrivate, Factory::GetSSOServerManager})
        plugin.OnCall(getter, [](const CallArguments&) { throw 1; });
    EXPECT_EQ(talix_init(), IdClientUnavailable);
    EXPECT_EQ(talix_get_boolean(TALIX_KEY_INITIALIZED), 0);
    EXPECT_EQ(talix_login(), IdNotInitialized);
}

} // namespace OrlindexTest
