// What the public operations return if the plugin, or one of its interfaces, is missing.

#include "ClientMembers.h"
#include "orlindex/IdServicesAutomation.h"
#include "support/HostTest.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;
using testing::ElementsAre;
using testing::IsEmpty;

/// The library is initialized with a plugin that has no client interface.
class Fallbacks : public StartedTest
{
protected:
    void SetUp() override
    {
        InstallPlugin().Return(Factory::GetSSOClient, 0);
        Start();
    }
};

TEST_F(Fallbacks, EveryMemberWithoutClientReturnsItsFallback)
{
    for (const ClientMember& member : ClientMembers())
    {
        SCOPED_TRACE(member.name);
        MemberArguments arguments;
        EXPECT_EQ(member.call(*manager, arguments), member.fallback);
    }
    EXPECT_THAT(Plugin().Calls(Client::Interface), IsEmpty());
}

TEST_F(Fallbacks, NoMemberWithoutClientTouchesItsArguments)
{
    for (const ClientMember& member : ClientMembers())
    {
        SCOPED_TRACE(member.name);
        MemberArguments arguments;
        member.call(*manager, arguments);
        EXPECT_STREQ(arguments.text, L"untouched");
        EXPECT_STREQ(arguments.profile, "untouched");
        EXPECT_EQ(arguments.profileSize, 64);
        EXPECT_EQ(arguments.result, 4711);
        EXPECT_EQ(arguments.mode, 4711);
    }
}

TEST_F(Fallbacks, IsOAuth2TokenExpiredWithoutClientReturnsTrueAndIsLoginExpiredReturnsFalse)
{
    EXPECT_TRUE(manager->IsOAuth2TokenExpired());
    EXPECT_FALSE(manager->IsLoginExpired());
}

TEST_F(Fallbacks, GetProductConfigWithoutClientCopiesTheEmptyConfiguration)
{
    // Entries that were never set are not copied: the target keeps its texts.
    ProductConfig config;
    config.SetOAuth2ClientID("kept");
    EXPECT_EQ(manager->GetProductConfig(TALIX_SERVER_PRODUCTION, config), IdClientUnavailable);
    char text[16] = {};
    EXPECT_EQ(config.GetOAuth2ClientID(text, sizeof text), 4);
    EXPECT_STREQ(text, "kept");
    EXPECT_EQ(config.GetProductLineName(text, sizeof text), 0);
}

TEST_F(Fallbacks, GetProductConfigWithoutClientDoesNotCopyTheConfigurationThatTheFlatInterfaceFills)
{
    manager->GetProductConfigObj()->SetProductLineName("line");
    ProductConfig config;
    EXPECT_EQ(manager->GetProductConfig(TALIX_SERVER_PRODUCTION, config), IdClientUnavailable);
    char text[16] = "untouched";
    EXPECT_EQ(config.GetProductLineName(text, sizeof text), 0);
    EXPECT_STREQ(text, "untouched");
}

TEST_F(Fallbacks, EveryRequestOfAMissingClientLogsTheReason)
{
    manager->IsLoggedIn();
    manager->HasEvent();
    const LogLine reason{Error, "Failed to obtain ISSOClient. ISSOClientFactory::GetSSOClient returned null."};
    EXPECT_THAT(Plugin().Log(), ElementsAre(reason, reason));
}

TEST_F(Fallbacks, AutomatedLoginWithoutClientReturnsClientUnavailable)
{
    EXPECT_EQ(IdServicesAutomation::Login(L"user", L"secret", true, L"context"), IdClientUnavailable);
}

TEST_F(Fallbacks, LoginWithoutArgumentsReturnsSuccess)
{
    EXPECT_EQ(manager->Login(), IdSuccess);
}

TEST_F(Fallbacks, TheProductConfigurationObjectNeedsNoClient)
{
    EXPECT_NE(manager->GetProductConfigObj(), nullptr);
}

class MissingInterfaces : public HostTest
{
};

TEST_F(MissingInterfaces, WithoutServerManagerQuitAllServerProcessesReturnsFalse)
{
    InstallPlugin().Return(Factory::GetSSOServerManager, 0);
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    Plugin().ClearJournal();
    EXPECT_FALSE(IdServicesMgr::GetInstance()->QuitAllSSOServerProcesses(1000));
    EXPECT_THAT(
        Plugin().Log(),
        ElementsAre(LogLine{
            Error, "Failed to obtain ISSOServerManager. ISSOClientFactory::GetSSOServerManager returned null."}));
    EXPECT_THAT(Plugin().Calls(ServerManager::Interface), IsEmpty());
}

TEST_F(MissingInterfaces, WithoutPrivateInterfaceTheClientStillServes)
{
    InstallPlugin().Return(Factory::GetSSOClientPrivate, 0);
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    Plugin().Return(Client::IsLoggedIn, 1);
    EXPECT_TRUE(IdServicesMgr::GetInstance()->IsLoggedIn());
}

TEST_F(MissingInterfaces, WithoutModuleInterfaceInitializeReturnsClientUnavailableAndLogsTheReason)
{
    InstallPlugin().Return(Factory::GetSSOClientModule, 0);
    EXPECT_EQ(IdServicesMgr::Initialize(), IdClientUnavailable);
    EXPECT_FALSE(IdServicesMgr::IsInitialized());
    EXPECT_EQ(IdServicesMgr::GetInstance(), nullptr);
    EXPECT_EQ(
        Plugin().Log().back(),
        (LogLine{Error, "Failed to obtain ISSOClientModule. ISSOClientFactory::GetSSOClientModule returned null."}));
    EXPECT_THAT(Plugin().Calls(Module::Interface), IsEmpty());
}

class NotInitialized : public HostTest
{
};

TEST_F(NotInitialized, AutomatedLoginReturnsClientUnavailableAndLoadsNothing)
{
    installation.Install();
    EXPECT_EQ(IdServicesAutomation::Login(L"user", L"secret", true, L"context"), IdClientUnavailable);
    EXPECT_FALSE(IsLoaded(installation.PluginFile()));
}

TEST_F(NotInitialized, AutomatedLoginAfterTheLastUninitializeDoesNotReachThePlugin)
{
    InstallPlugin();
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    EXPECT_EQ(IdServicesAutomation::Login(L"user", L"secret", true, L"context"), IdClientUnavailable);
    EXPECT_THAT(Plugin().Calls(Client::Interface), IsEmpty());
}

} // namespace OrlindexTest
