// Every public operation calls its own operation of the plugin, and only that one.

#include <cstring>
#include <future>
#include <type_traits>

#include "ClientMembers.h"
#include "PrivateMembers.h"
#include "orlindex/IdServicesAutomation.h"
#include "support/HostTest.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;
using testing::ElementsAre;

class Slots : public StartedTest
{
};

TEST_F(Slots, EveryMemberReachesItsSlotWithItsArgumentsInOrder)
{
    for (const ClientMember& member : ClientMembers())
    {
        SCOPED_TRACE(member.name);
        MemberArguments arguments;
        Plugin().ClearJournal();
        member.call(*manager, arguments);
        EXPECT_THAT(Plugin().Calls(), ElementsAre(Call(member.operation, member.arguments(arguments))));
    }
}

TEST_F(Slots, EveryMemberPassesThePluginsResultOn)
{
    for (const ClientMember& member : ClientMembers())
    {
        SCOPED_TRACE(member.name);
        for (const std::int64_t result : member.pluginResults)
        {
            Plugin().Return(member.operation, result);
            MemberArguments arguments;
            EXPECT_EQ(member.call(*manager, arguments), member.fixedResult != 0 ? member.fixedResult : result);
        }
    }
}

TEST_F(Slots, AddObserverWhenThePluginReportsFailureStillReturnsSuccess)
{
    Plugin().Return(Client::AddObserver, 3999);
    Plugin().Return(Client::RemoveObserver, 3998);
    MemberArguments arguments;
    EXPECT_EQ(manager->AddObserver(arguments.observer), IdSuccess);
    EXPECT_EQ(manager->RemoveObserver(arguments.observer), IdSuccess);
    EXPECT_THAT(Plugin().Calls(), ElementsAre(Call(Client::AddObserver, Address(arguments.observer)),
                                              Call(Client::RemoveObserver, Address(arguments.observer))));
}

TEST_F(Slots, WhatThePluginWritesArrivesInTheCallersArguments)
{
    MemberArguments arguments;
    const auto writeText = [](std::size_t index, const wchar_t* text) {
        return [index, text](const CallArguments& call) { std::wcscpy(call.Pointer<wchar_t>(index), text); };
    };
    const auto writeNumber = [](std::size_t index, int number) {
        return [index, number](const CallArguments& call) { *call.Pointer<int>(index) = number; };
    };
    Plugin().OnCall(Client::GetProductConfig,
                    [](const CallArguments& call) { call.Pointer<ProductConfig>(1)->SetProductLineName("line"); });
    Plugin().OnCall(Client::GetUserInfo,
                    [](const CallArguments& call) { call.Pointer<talix_user_info>(0)->email_size = 17; });
    Plugin().OnCall(Client::GetSessionUri, writeText(2, L"session"));
    Plugin().OnCall(Client::GetOAuth2AccessToken, writeText(0, L"access"));
    Plugin().OnCall(Client::Logout, writeNumber(0, 16));
    Plugin().OnCall(Client::GetProxyInfo,
                    [](const CallArguments& call) { call.Pointer<talix_proxy_info>(2)->port = 3128; });
    Plugin().OnCall(Client::GetProfileInfo, [](const CallArguments& call) {
        std::strcpy(call.Pointer<char>(0), "profile");
        *call.Pointer<int>(1) = 8;
    });
    Plugin().OnCall(Client::Login, writeNumber(0, 28));
    Plugin().OnCall(Client::ShowAccountSettings, writeNumber(0, 31));
    Plugin().OnCall(Client::GetOAuth2IdToken, writeText(0, L"id"));
    Plugin().OnCall(Client::GetLoginMode, writeNumber(0, 37));

    manager->GetProductConfig(TALIX_SERVER_STAGING, arguments.config);
    char line[8] = {};
    EXPECT_EQ(arguments.config.GetProductLineName(line, sizeof line), 4);
    EXPECT_STREQ(line, "line");
    manager->GetUserInfo(&arguments.userInfo);
    EXPECT_EQ(arguments.userInfo.email_size, 17);
    manager->GetSessionUri(L"uri", 0, arguments.text, 64);
    EXPECT_STREQ(arguments.text, L"session");
    manager->GetOAuth2AccessToken(arguments.text, 64, false);
    EXPECT_STREQ(arguments.text, L"access");
    manager->Logout(arguments.result, TALIX_LOGOUT_DEFAULT);
    EXPECT_EQ(arguments.result, 16);
    manager->GetProxyInfo("host", 1, &arguments.proxyInfo);
    EXPECT_EQ(arguments.proxyInfo.port, 3128);
    manager->GetProfileInfo(arguments.profile, &arguments.profileSize);
    EXPECT_STREQ(arguments.profile, "profile");
    EXPECT_EQ(arguments.profileSize, 8);
    manager->Login(arguments.result);
    EXPECT_EQ(arguments.result, 28);
    manager->ShowAccountSettings(arguments.result);
    EXPECT_EQ(arguments.result, 31);
    manager->GetOAuth2IdToken(arguments.text, 64);
    EXPECT_STREQ(arguments.text, L"id");
    manager->GetLoginMode(arguments.mode);
    EXPECT_EQ(arguments.mode, 37);
}

TEST_F(Slots, TheProductConfigurationOfTheHostReachesThePlugin)
{
    ProductConfig config;
    config.SetOAuth2ClientID("client-7");
    std::string seen;
    Plugin().OnCall(Client::SetProductConfig, [&seen](const CallArguments& call) {
        char text[32] = {};
        call.Pointer<const ProductConfig>(1)->GetOAuth2ClientID(text, sizeof text);
        seen = text;
    });
    EXPECT_EQ(manager->SetProductConfig(TALIX_SERVER_PRODUCTION, config), IdSuccess);
    EXPECT_EQ(seen, "client-7");
}

TEST_F(Slots, QuitAllServerProcessesReachesTheServerManager)
{
    Plugin().Return(ServerManager::QuitAllSSOServerProcesses, 1);
    EXPECT_TRUE(manager->QuitAllSSOServerProcesses(0x123456789A));
    Plugin().Return(ServerManager::QuitAllSSOServerProcesses, 0);
    EXPECT_FALSE(manager->QuitAllSSOServerProcesses(-1));
    EXPECT_THAT(Plugin().Calls(), ElementsAre(Call(ServerManager::QuitAllSSOServerProcesses, "78187493530"),
                                              Call(ServerManager::QuitAllSSOServerProcesses, "-1")));
}

TEST_F(Slots, LoginWithoutArgumentsDoesNothing)
{
    EXPECT_EQ(manager->Login(), IdSuccess);
    EXPECT_THAT(Plugin().Calls(), ElementsAre());
}

TEST_F(Slots, AutomatedLoginReachesItsSlotWithItsArgumentsInOrder)
{
    Plugin().Return(Client::AutomatedLogin, 3123);
    EXPECT_EQ(IdServicesAutomation::Login(L"user", L"secret", true, L"context"), 3123);
    Plugin().Return(Client::AutomatedLogin, -1);
    EXPECT_EQ(IdServicesAutomation::Login(nullptr, L"", false, nullptr), -1);
    EXPECT_THAT(Plugin().Calls(), ElementsAre(Call(Client::AutomatedLogin, "\"user\", \"secret\", true, \"context\""),
                                              Call(Client::AutomatedLogin, "null, \"\", false, null")));
}

TEST_F(Slots, ThePluginRunsOnTheCallersThread)
{
    DWORD thread = 0;
    Plugin().OnCall(Client::IsLoggedIn, [&thread](const CallArguments&) { thread = GetCurrentThreadId(); });
    manager->IsLoggedIn();
    EXPECT_EQ(thread, GetCurrentThreadId());
    const DWORD other = std::async(std::launch::async, [this]() {
                            manager->IsLoggedIn();
                            return GetCurrentThreadId();
                        }).get();
    EXPECT_EQ(thread, other);
    EXPECT_NE(thread, GetCurrentThreadId());
}

TEST_F(Slots, NoLockIsHeldWhileThePluginRuns)
{
    std::promise<void> entered;
    std::promise<void> leave;
    Plugin().OnCall(Client::GetOAuth2AccessToken, [&](const CallArguments&) {
        entered.set_value();
        leave.get_future().wait();
    });
    auto blocked = std::async(std::launch::async, [this]() {
        wchar_t token[8];
        return manager->GetOAuth2AccessToken(token, 8, true);
    });
    entered.get_future().wait();
    EXPECT_FALSE(manager->IsLoggedIn());
    EXPECT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    leave.set_value();
    EXPECT_EQ(blocked.get(), IdSuccess);
}

TEST_F(Slots, TheClientInterfaceIsObtainedAfreshOnEveryCall)
{
    // The same object before and after a new start-up that finds another plugin: a kept interface would be the first
    // one's.
    IdServicesMgr& kept = ManagerWithoutState();
    MemberArguments arguments;
    for (const ClientMember& member : ClientMembers())
        member.call(kept, arguments);
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    const auto file = installation.ServerFolder() / "OtherClient.dll";
    installation.CopyPlugin("asia", file);
    installation.WriteCompatibilityFile({CompatibilityEntry{"%SSOServerAppPath%\\OtherClient.dll"}});
    PluginControl other(file);
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    Plugin().ClearJournal();

    for (const ClientMember& member : ClientMembers())
    {
        SCOPED_TRACE(member.name);
        other.ClearJournal();
        member.call(kept, arguments);
        EXPECT_THAT(other.Calls(), ElementsAre(Call(member.operation, member.arguments(arguments))));
    }
    EXPECT_THAT(Plugin().Calls(), ElementsAre());
}

TEST_F(Slots, AnOperationOfThePluginMayCallAMember)
{
    std::string inner;
    Plugin().OnCall(Client::Login,
                    [&](const CallArguments&) { inner = manager->IsLoginValid() ? "valid" : "not valid"; });
    Plugin().Return(Client::IsLoginValid, 1);
    int result = 0;
    EXPECT_EQ(manager->Login(result), IdSuccess);
    EXPECT_EQ(inner, "valid");
}

TEST_F(Slots, TheProductConfigurationObjectIsOneAndBelongsToTheManager)
{
    ProductConfig* const config = manager->GetProductConfigObj();
    ASSERT_NE(config, nullptr);
    config->SetProductBuildId("17");
    EXPECT_EQ(manager->GetProductConfigObj(), config);
    char text[8] = {};
    EXPECT_EQ(manager->GetProductConfigObj()->GetProductBuildId(text, sizeof text), 2);
    EXPECT_THAT(Plugin().Calls(), ElementsAre());
}

// The manager holds its private state and nothing else, and assignment shares that state.
static_assert(sizeof(IdServicesMgr) == sizeof(void*));
static_assert(std::is_copy_assignable_v<IdServicesMgr>);
static_assert(!std::is_default_constructible_v<IdServicesMgr> && !std::is_copy_constructible_v<IdServicesMgr> &&
              !std::is_destructible_v<IdServicesMgr> && !std::is_polymorphic_v<IdServicesMgr>);

TEST_F(Slots, AssignmentSharesThePrivateState)
{
    void* storage = nullptr;
    auto& copy = reinterpret_cast<IdServicesMgr&>(storage);
    EXPECT_EQ(&(copy = *manager), &copy);
    EXPECT_EQ(copy.GetProductConfigObj(), manager->GetProductConfigObj());
}

} // namespace OrlindexTest
