// Overriding configurations: which check comes first, and what reaches the plugin.

#include <chrono>
#include <cstddef>
#include <future>
#include <limits>
#include <typeinfo>

#include <json/value.h>

#include "orlindex/IdServicesAutomation.h"
#include "orlindex/SSOClientPrivate.h"
#include "support/HostTest.h"
#include "support/Patience.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr std::int32_t largest = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t smallest = std::numeric_limits<std::int32_t>::min();

/// A kind of configuration that only the host knows. Counts how often it is used.
class HostConfig : public BaseConfig
{
public:
    void FromJson(const Json::Value& /*json*/) override { ++uses; }
    Json::Value ToJson() const override { return ++uses; }
    std::int32_t GetJsonVersion() const override { return ++uses; }

    mutable int uses = 0;
};

/// A host's own kind of CallConfig.
struct NamedCallConfig : CallConfig
{
    std::string name = "named";
};

CallConfig SomeCall()
{
    CallConfig call;
    call.interval = 11;
    call.failInterval = -12;
    call.minJitter = 13;
    call.maxJitter = 14;
    call.url = "https://call/\xC3\xBC";
    return call;
}

constexpr char SomeCallShown[] = "11, -12, 13, 14, \"https://call/\xC3\xBC\"";

BackoffConfig SomeBackoff()
{
    BackoffConfig backoff;
    backoff.initialInterval = 21;
    backoff.maxInterval = -22;
    backoff.multiplier = 23;
    backoff.maxRetries = 24;
    backoff.jitter = 25;
    return backoff;
}

constexpr char SomeBackoffShown[] = "21, -22, 23, 24, 25";

/// Not constexpr: the address of an imported function is only known after the load.
const auto Override = &IdServicesAutomation::SetOverridingConfig;
constexpr auto OfCall = IdServicesAutomation::Call;
constexpr auto OfBackoff = IdServicesAutomation::Backoff;
constexpr IdServicesAutomation::OverridingType otherTypes[] = {
    static_cast<IdServicesAutomation::OverridingType>(2), static_cast<IdServicesAutomation::OverridingType>(-1),
    static_cast<IdServicesAutomation::OverridingType>(largest),
    static_cast<IdServicesAutomation::OverridingType>(smallest)};

/// The exact class matters: a host catches std::bad_cast of its own runtime.
void ExpectBadCast(BaseConfig& config, IdServicesAutomation::OverridingType type)
{
    try
    {
        Override(config, type);
        ADD_FAILURE() << "nothing was thrown";
    }
    catch (const std::bad_cast& error)
    {
        EXPECT_EQ(typeid(error), typeid(std::bad_cast));
    }
}

/// The offset of a field. offsetof does not support classes with virtual tables.
template <class Config, class Field>
std::size_t PlaceOf(Field Config::* field)
{
    const Config config;
    return static_cast<std::size_t>(reinterpret_cast<const char*>(&(config.*field)) -
                                    reinterpret_cast<const char*>(&config));
}

/// Expects IdClientUnavailable for every input, also for mismatched and unknown types, and that nothing is touched.
void ExpectUnavailableForAnyInput()
{
    CallConfig call = SomeCall();
    BackoffConfig backoff = SomeBackoff();
    HostConfig host;
    for (BaseConfig* config :
         {static_cast<BaseConfig*>(&call), static_cast<BaseConfig*>(&backoff), static_cast<BaseConfig*>(&host)})
    {
        EXPECT_EQ(Override(*config, OfCall), IdClientUnavailable);
        EXPECT_EQ(Override(*config, OfBackoff), IdClientUnavailable);
        for (const auto type : otherTypes)
            EXPECT_EQ(Override(*config, type), IdClientUnavailable);
    }
    EXPECT_EQ(call.ToJson(), SomeCall().ToJson());
    EXPECT_EQ(backoff.jitter, 25);
    EXPECT_EQ(host.uses, 0);
}

} // namespace

// Hosts of other builds fill the fields at these offsets.

constexpr std::size_t table = sizeof(void*);

TEST(AutomationLayout, TheFieldsOfACallConfigFollowItsTableInTheirOrder)
{
    EXPECT_EQ(PlaceOf(&CallConfig::interval), table);
    EXPECT_EQ(PlaceOf(&CallConfig::failInterval), table + 4);
    EXPECT_EQ(PlaceOf(&CallConfig::minJitter), table + 8);
    EXPECT_EQ(PlaceOf(&CallConfig::maxJitter), table + 12);
    EXPECT_EQ(PlaceOf(&CallConfig::url), table + 16);
    EXPECT_EQ(sizeof(CallConfig), table + 16 + sizeof(std::string));
}

TEST(AutomationLayout, TheFieldsOfABackoffConfigFollowItsTableInTheirOrder)
{
    EXPECT_EQ(PlaceOf(&BackoffConfig::initialInterval), table);
    EXPECT_EQ(PlaceOf(&BackoffConfig::maxInterval), table + 4);
    EXPECT_EQ(PlaceOf(&BackoffConfig::multiplier), table + 8);
    EXPECT_EQ(PlaceOf(&BackoffConfig::maxRetries), table + 12);
    EXPECT_EQ(PlaceOf(&BackoffConfig::jitter), table + 16);
    EXPECT_EQ(sizeof(BackoffConfig), table + 16 + table) << "the last field, and what aligns it";
}

using AutomationOverride = StartedTest;

TEST_F(AutomationOverride, ACallConfigReachesItsSlotWithItsFieldsInOrder)
{
    CallConfig call = SomeCall();
    EXPECT_EQ(Override(call, OfCall), IdSuccess);
    EXPECT_THAT(Plugin().Calls(), ElementsAre(Call(Client::OverrideCallConfig, SomeCallShown)));
}

TEST_F(AutomationOverride, ABackoffConfigReachesItsSlotWithItsFieldsInOrder)
{
    BackoffConfig backoff = SomeBackoff();
    EXPECT_EQ(Override(backoff, OfBackoff), IdSuccess);
    EXPECT_THAT(Plugin().Calls(), ElementsAre(Call(Client::OverrideBackoffConfig, SomeBackoffShown)));
}

TEST_F(AutomationOverride, NoValueIsLookedAt)
{
    CallConfig call;
    EXPECT_EQ(Override(call, OfCall), IdSuccess);
    call.interval = smallest;
    call.failInterval = largest;
    call.minJitter = -1;
    call.url = std::string("a\0b", 3);
    EXPECT_EQ(Override(call, OfCall), IdSuccess);
    BackoffConfig backoff;
    EXPECT_EQ(Override(backoff, OfBackoff), IdSuccess);
    backoff.initialInterval = smallest;
    backoff.jitter = largest;
    EXPECT_EQ(Override(backoff, OfBackoff), IdSuccess);
    EXPECT_THAT(Plugin().Calls(), ElementsAre(Call(Client::OverrideCallConfig, "0, 0, 0, 0, \"\""),
                                              Call(Client::OverrideCallConfig, "-2147483648, 2147483647, -1, 0, \"a\""),
                                              Call(Client::OverrideBackoffConfig, "0, 0, 0, 0, 0"),
                                              Call(Client::OverrideBackoffConfig, "-2147483648, 0, 0, 0, 2147483647")));
}

TEST_F(AutomationOverride, ThePluginsResultIsPassedOn)
{
    CallConfig call;
    BackoffConfig backoff;
    for (const int result : {int{IdSuccess}, 1001, 3030, 999, 0, -7})
    {
        Plugin().Return(Client::OverrideCallConfig, result);
        Plugin().Return(Client::OverrideBackoffConfig, result);
        EXPECT_EQ(Override(call, OfCall), result);
        EXPECT_EQ(Override(backoff, OfBackoff), result);
    }
}

TEST_F(AutomationOverride, TheConfigurationItselfIsLeftAlone)
{
    CallConfig call = SomeCall();
    Plugin().OnCall(Client::OverrideCallConfig, [&call](const CallArguments& arguments) {
        call.url = "changed while the plugin runs";
        EXPECT_STREQ(arguments.Pointer<const char>(4), "https://call/\xC3\xBC");
    });
    Override(call, OfCall);
    EXPECT_EQ(call.interval, 11);
    EXPECT_EQ(call.url, "changed while the plugin runs");
}

TEST_F(AutomationOverride, AnyOtherTypeReturnsClientUnavailable)
{
    CallConfig call;
    BackoffConfig backoff;
    HostConfig host;
    for (const auto type : otherTypes)
    {
        EXPECT_EQ(Override(call, type), IdClientUnavailable) << type;
        EXPECT_EQ(Override(backoff, type), IdClientUnavailable) << type;
        EXPECT_EQ(Override(host, type), IdClientUnavailable) << type;
    }
    EXPECT_THAT(Plugin().Calls(), IsEmpty());
    EXPECT_EQ(host.uses, 0);
}

TEST_F(AutomationOverride, AConfigurationOfTheWrongClassThrowsBadCast)
{
    CallConfig call;
    BackoffConfig backoff;
    HostConfig host;
    ExpectBadCast(backoff, OfCall);
    ExpectBadCast(call, OfBackoff);
    ExpectBadCast(host, OfCall);
    ExpectBadCast(host, OfBackoff);
    EXPECT_THAT(Plugin().Calls(), IsEmpty());
    EXPECT_THAT(Plugin().Log(), IsEmpty());
    EXPECT_EQ(host.uses, 0);
}

TEST_F(AutomationOverride, AHostsClassOfTheRightKindServes)
{
    NamedCallConfig call;
    call.interval = 31;
    EXPECT_EQ(Override(call, OfCall), IdSuccess);
    ExpectBadCast(call, OfBackoff);
    EXPECT_THAT(Plugin().Calls(), ElementsAre(Call(Client::OverrideCallConfig, "31, 0, 0, 0, \"\"")));
}

TEST_F(AutomationOverride, AnExceptionOfThePluginPassesToTheCaller)
{
    Plugin().OnCall(Client::OverrideBackoffConfig, [](const CallArguments&) { throw 4711; });
    BackoffConfig backoff;
    EXPECT_THROW(Override(backoff, OfBackoff), int);
}

TEST_F(AutomationOverride, ThePluginRunsOnTheCallersThreadWithNoLockHeld)
{
    DWORD thread = 0;
    std::future<void> elsewhere; // Outlives the plugin's call: it only ends afterwards if a lock is held.
    const auto useLocksElsewhere = [&](const CallArguments&) {
        thread = GetCurrentThreadId();
        elsewhere = std::async(std::launch::async, [] {
            SSOClientPrivate::ClearEventQueue();
            IdServicesMgr::Initialize();
            IdServicesMgr::Uninitialize();
        });
        EXPECT_EQ(elsewhere.wait_for(Patience), std::future_status::ready);
    };
    Plugin().OnCall(Client::OverrideCallConfig, useLocksElsewhere);
    Plugin().OnCall(Client::OverrideBackoffConfig, useLocksElsewhere);
    CallConfig call;
    BackoffConfig backoff;
    for (const auto type : {OfCall, OfBackoff})
    {
        BaseConfig& config = type == OfCall ? static_cast<BaseConfig&>(call) : backoff;
        thread = 0;
        EXPECT_EQ(Override(config, type), IdSuccess);
        EXPECT_EQ(thread, GetCurrentThreadId());
        elsewhere.get();
    }
}

TEST_F(AutomationOverride, AnInstanceWithoutStateReturnsClientUnavailableForAnyInput)
{
    void* storage = nullptr;
    *manager = reinterpret_cast<const IdServicesMgr&>(storage);
    ExpectUnavailableForAnyInput();
    EXPECT_EQ(IdServicesAutomation::Login(L"user", L"secret", true, L"context"), IdClientUnavailable);
    EXPECT_THAT(Plugin().Calls(), IsEmpty());
}

class AutomationNotInitialized : public HostTest
{
};

TEST_F(AutomationNotInitialized, AnyInputBeforeInitializeReturnsClientUnavailableAndTouchesNothing)
{
    installation.Install();
    ExpectUnavailableForAnyInput();
    EXPECT_FALSE(IsLoaded(installation.PluginFile()));
}

TEST_F(AutomationNotInitialized, AnyInputAfterTheLastUninitializeReturnsClientUnavailableAndReachesNothing)
{
    InstallPlugin();
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    Plugin().ClearJournal();
    ExpectUnavailableForAnyInput();
    EXPECT_THAT(Plugin().Calls(), IsEmpty());
}

/// Initialized with a plugin that has no client interface.
class AutomationWithoutClient : public StartedTest
{
protected:
    void SetUp() override
    {
        InstallPlugin().Return(Factory::GetSSOClient, 0);
        Start();
    }

    const LogLine reason{Error, "Failed to obtain ISSOClient. ISSOClientFactory::GetSSOClient returned null."};
};

TEST_F(AutomationWithoutClient, BothKindsReturnClientUnavailable)
{
    CallConfig call = SomeCall();
    BackoffConfig backoff = SomeBackoff();
    EXPECT_EQ(Override(call, OfCall), IdClientUnavailable);
    EXPECT_EQ(Override(backoff, OfBackoff), IdClientUnavailable);
    EXPECT_THAT(Plugin().Log(), ElementsAre(reason, reason));
    EXPECT_THAT(Plugin().Calls(), IsEmpty());
}

TEST_F(AutomationWithoutClient, AConfigurationOfTheWrongClassStillThrowsAfterTheClientWasAskedFor)
{
    HostConfig host;
    ExpectBadCast(host, OfCall);
    ExpectBadCast(host, OfBackoff);
    EXPECT_THAT(Plugin().Log(), ElementsAre(reason, reason));
}

TEST_F(AutomationWithoutClient, AnyOtherTypeAsksForTheClientToo)
{
    HostConfig host;
    for (const auto type : otherTypes)
    {
        Plugin().ClearJournal();
        EXPECT_EQ(Override(host, type), IdClientUnavailable);
        EXPECT_THAT(Plugin().Log(), ElementsAre(reason));
    }
}

} // namespace OrlindexTest
