// What the private and server-process classes return if the plugin, or one of its interfaces, is missing.

#include "PrivateTest.h"
#include "orlindex/SSOServerManager.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

void ExpectFallback(const PrivateMember& member)
{
    SCOPED_TRACE(member.name);
    PrivateArguments arguments;
    const std::string before = arguments.Outputs();
    EXPECT_EQ(member.call(arguments), member.fallback);
    EXPECT_EQ(arguments.Outputs(), before);
}

} // namespace

class PrivateFallbacks : public HostTest
{
protected:
    /// Expects that members of an interface that the factory returns null for fall back, and that the others work.
    void ExpectFallbacksWithout(const std::string& interfaceName, const PluginOperation& getter, const LogLine& reason)
    {
        InstallPlugin().Return(getter, 0);
        for (const PrivateMember& member : PrivateMembers())
        {
            if (member.operation.interfaceName != interfaceName)
                continue;
            SSOClientPrivate::GetProductName(); // Loads the plugin for the first of them.
            Plugin().ClearJournal();
            ExpectFallback(member);
            EXPECT_THAT(Plugin().Log(), ElementsAre(reason)) << "the surface itself adds nothing";
            EXPECT_THAT(Plugin().Calls(), IsEmpty());
        }
        for (const PrivateMember& member : PrivateMembers())
        {
            if (member.operation.interfaceName == interfaceName)
                continue;
            Plugin().ClearJournal();
            PrivateArguments arguments;
            member.call(arguments);
            EXPECT_THAT(Plugin().Calls(member.operation.interfaceName), SizeIs(1)) << member.name;
        }
    }
};

TEST_F(PrivateFallbacks, WithNoPluginLoadableEveryMemberReturnsItsFallbackAndTouchesNothing)
{
    installation.InstallWithoutPlugin();
    for (const PrivateMember& member : PrivateMembers())
        ExpectFallback(member);
}

TEST_F(PrivateFallbacks, WithNothingInstalledEveryMemberReturnsItsFallbackAndTouchesNothing)
{
    for (const PrivateMember& member : PrivateMembers())
        ExpectFallback(member);
}

TEST_F(PrivateFallbacks, WithNoPluginLoadableServerNameToServerReturnsMinusOneAndTheTimeoutIsZeroSeconds)
{
    installation.InstallWithoutPlugin();
    EXPECT_EQ(SSOClientPrivate::ServerNameToServer(L"production"), -1);
    EXPECT_EQ(SSOClientPrivate::GetKillFrozenServerTimeout(), std::chrono::seconds(0));
}

TEST_F(PrivateFallbacks, WithNoPluginLoadableTheRetryScheduleIsZeroWithoutEntries)
{
    installation.InstallWithoutPlugin();
    const Kestrany::StdUtil::RetrySchedule schedule = SSOClientPrivate::GetActiveOAuth2TokenRefreshRetrySchedule();
    EXPECT_EQ(schedule.limit, 0);
    EXPECT_THAT(schedule.steps, IsEmpty());
}

TEST_F(PrivateFallbacks, ATamperedPluginCountsAsMissing)
{
    installation.Install();
    Tamper(installation.PluginFile());
    for (const PrivateMember& member : PrivateMembers())
        ExpectFallback(member);
    EXPECT_FALSE(IsLoaded(installation.PluginFile()));
}

TEST_F(PrivateFallbacks, AfterTheFailedLoadNoMemberPrintsAnything)
{
    installation.InstallWithoutPlugin();
    SSOClientPrivate::ClearEventQueue();
    CapturedOutput output;
    for (const PrivateMember& member : PrivateMembers())
        ExpectFallback(member);
    EXPECT_EQ(output.Take(), "");
}

TEST_F(PrivateFallbacks, WithoutPrivateInterfaceItsMembersReturnTheirFallbacks)
{
    ExpectFallbacksWithout(
        Private::Interface, Factory::GetSSOClientPrivate,
        {Error, "Failed to obtain ISSOClientPrivate. ISSOClientFactory::GetSSOClientPrivate returned null."});
}

TEST_F(PrivateFallbacks, WithoutServerManagerItsMembersReturnTheirFallbacks)
{
    ExpectFallbacksWithout(
        ServerManager::Interface, Factory::GetSSOServerManager,
        {Error, "Failed to obtain ISSOServerManager. ISSOClientFactory::GetSSOServerManager returned null."});
}

TEST_F(PrivateFallbacks, WithoutModuleInterfaceItsMembersReturnTheirFallbacks)
{
    ExpectFallbacksWithout(
        Module::Interface, Factory::GetSSOClientModule,
        {Error, "Failed to obtain ISSOClientModule. ISSOClientFactory::GetSSOClientModule returned null."});
}

} // namespace OrlindexTest
