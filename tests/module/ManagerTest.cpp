// The manager, which finds and loads the plugin: its creation, its loads, its interface getters.

#include <array>
#include <chrono>
#include <functional>
#include <future>
#include <optional>
#include <set>
#include <vector>

#include "LocateTest.h"
#include "base/Log.h"
#include "base/ProcessLock.h"
#include "base/Product.h"
#include "load/PluginInterfaces.h"
#include "support/CapturedOutput.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;
namespace TALIXLog = Kestrany::TALIXLog;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

class Manager : public LocateTest
{
protected:
    std::string ModuleLoaded() const
    {
        return "Orlindex.dll module loaded (Version: 1.11.13.3 Config: x64-Release File: " +
               Utf8(library / "Orlindex.dll") + ')';
    }

    /// Installs everything with the test plugin.
    void Install()
    {
        installation.Install();
        plugin.emplace(installation.PluginFile());
    }

    std::optional<PluginControl> plugin;
};

TEST_F(Manager, TwoThreadsAskingForTheManagerAtTheSameTimeGetTheSameObject)
{
    for (int round = 0; round < 50; ++round)
    {
        SSOPathResolver::Forget();
        std::promise<void> start;
        const std::shared_future<void> started = start.get_future().share();
        const auto ask = [started] {
            started.wait();
            return SSOPathResolver::GetInstance();
        };
        std::vector<std::future<SSOPathResolver*>> askers;
        for (int i = 0; i < 4; ++i)
            askers.push_back(std::async(std::launch::async, ask));
        start.set_value();
        std::set<SSOPathResolver*> managers;
        for (std::future<SSOPathResolver*>& asker : askers)
            managers.insert(asker.get());
        ASSERT_THAT(managers, ElementsAre(SSOPathResolver::GetInstance()));
    }
}

TEST_F(Manager, ThreadsThatAllFoundNoManagerStillGetTheSameObject)
{
    std::array<std::promise<void>, 2> asking;
    std::vector<std::future<SSOPathResolver*>> askers;
    SSOPathResolver::Forget();
    {
        const ProcessLockGuard guard(processLock);
        for (std::promise<void>& asks : asking)
            askers.push_back(std::async(std::launch::async, [&asks] {
                asks.set_value();
                return SSOPathResolver::GetInstance();
            }));
        for (std::promise<void>& asks : asking)
            asks.get_future().wait();
        EXPECT_EQ(askers[0].wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
        EXPECT_EQ(askers[1].wait_for(std::chrono::milliseconds(0)), std::future_status::timeout);
    }
    EXPECT_EQ(askers[0].get(), askers[1].get());
}

namespace {

/// Expects that `work`, on another thread, waits for the process lock that this thread owns. `isDone` is checked
/// meanwhile.
void ExpectToWaitForTheLock(const std::function<void()>& work, const std::function<bool()>& isDone)
{
    std::promise<void> beginning;
    std::future<void> other;
    {
        const ProcessLockGuard guard(processLock);
        other = std::async(std::launch::async, [&] {
            beginning.set_value();
            work();
        });
        beginning.get_future().wait();
        EXPECT_EQ(other.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
        EXPECT_FALSE(isDone());
    }
    other.get();
    EXPECT_TRUE(isDone());
}

} // namespace

TEST_F(Manager, ForgettingWaitsForAThreadThatHoldsTheLock)
{
    Install();
    ASSERT_TRUE(manager.EnsureClientLoaded());
    ExpectToWaitForTheLock([] { SSOPathResolver::Forget(); }, [] { return pluginInterfaces.ssoClient == nullptr; });
}

TEST_F(Manager, AskingForTheClientAfterTheModuleBeganWaitsForAThreadThatHoldsTheLock)
{
    Install();
    const std::int64_t client = plugin->ResultOf(Factory::GetSSOClient);
    plugin->Return(Factory::GetSSOClient, 0);
    ASSERT_TRUE(manager.EnsureClientLoaded());
    plugin->Return(Factory::GetSSOClient, client);
    ExpectToWaitForTheLock([this] { manager.EnsureClientAfterInitialize(); },
                           [] { return pluginInterfaces.ssoClient != nullptr; });
}

TEST_F(Manager, ANewManagerHasResolvedNothing)
{
    EXPECT_EQ(manager.ClientConfigFilePath(), L"");
    EXPECT_EQ(manager.ClientConfigFileOverride(), L"");
    EXPECT_EQ(manager.VersionCompatibilityFilePath(), L"");
    EXPECT_EQ(manager.ClientPluginModulePath(), L"");
    EXPECT_EQ(manager.Settings().searchName, L"");
    EXPECT_EQ(manager.Settings().defaultProcessName, "");
    EXPECT_FALSE(manager.Settings().supportBothLocalAndAdmin);
    EXPECT_THAT(log.Take(), IsEmpty()) << "nothing was looked for either";
}

TEST_F(Manager, AfterForgettingTheNextManagerResolvesAnew)
{
    FindServerApplication();
    SSOPathResolver::Forget();
    SSOPathResolver* const next = SSOPathResolver::GetInstance();
    ASSERT_NE(next, &manager);
    EXPECT_EQ(next->ClientConfigFilePath(), L"");
    EXPECT_EQ(ToUtf8(next->GetSSOServerAppPath()), Utf8(installation.ServerFolder()));
    EXPECT_THAT(log.Take(), Not(IsEmpty()));
    EXPECT_EQ(ToUtf8(manager.GetSSOServerAppPath()), Utf8(installation.ServerFolder()))
        << "who holds the old one may use it";
}

TEST_F(Manager, WhoHoldsAForgottenManagerLoadsAgain)
{
    Install();
    ASSERT_NE(manager.GetSSOClient(), nullptr);
    SSOPathResolver::Forget();
    plugin->ClearJournal();
    EXPECT_NE(manager.GetSSOClient(), nullptr);
    EXPECT_THAT(plugin->Log(), Contains(InfoLine(ModuleLoaded())));
    EXPECT_THAT(plugin->Calls(FactoryFunction), SizeIs(1));
}

TEST_F(Manager, AForgottenManagerWhoseLoadFailedLoadsAgain)
{
    Install();
    const std::int64_t factory = plugin->ResultOf(FactoryFunction);
    plugin->Return(FactoryFunction, 0);
    ASSERT_EQ(manager.GetSSOClient(), nullptr);
    plugin->Return(FactoryFunction, factory);
    SSOPathResolver::Forget();
    plugin->ClearJournal();
    log.Take();
    EXPECT_NE(manager.GetSSOClient(), nullptr);
    EXPECT_THAT(log.Take(), Contains(InfoLine(ModuleLoaded())));
    EXPECT_THAT(plugin->Calls(FactoryFunction), SizeIs(1));
}

TEST_F(Manager, ALoadThatFailsReturnsNullFromEveryGetterAndAnnouncesTheModuleEachTime)
{
    EXPECT_EQ(manager.GetSSOClient(), nullptr);
    EXPECT_THAT(log.Take(),
                AllOf(Contains(InfoLine(ModuleLoaded())), Contains(ErrorLine("Client plugin module not found: "))));
    EXPECT_EQ(manager.GetSSOClientPrivate(), nullptr);
    EXPECT_THAT(log.Take(), ElementsAre(InfoLine(ModuleLoaded()))) << "the loader refuses a second attempt";
    EXPECT_EQ(manager.GetSSOClientModule(), nullptr);
    EXPECT_THAT(log.Take(), ElementsAre(InfoLine(ModuleLoaded())));
    EXPECT_EQ(manager.GetSSOServerManager(), nullptr);
    EXPECT_THAT(log.Take(), ElementsAre(InfoLine(ModuleLoaded())));
    EXPECT_FALSE(manager.EnsureClientLoaded());
    EXPECT_THAT(log.Take(), ElementsAre(InfoLine(ModuleLoaded())));
}

TEST_F(Manager, AFailedLoadIsNotTriedAgainOnTheSameManagerEvenIfThePluginComes)
{
    EXPECT_FALSE(manager.EnsureClientLoaded());
    installation.Install();
    EXPECT_FALSE(manager.EnsureClientLoaded());
    SSOPathResolver::Forget();
    EXPECT_TRUE(SSOPathResolver::GetInstance()->EnsureClientLoaded());
}

TEST_F(Manager, AFailedLoadKeepsWhatWasResolved)
{
    installation.InstallWithoutPlugin();
    EXPECT_FALSE(manager.EnsureClientLoaded());
    EXPECT_EQ(ToUtf8(manager.ClientPluginModulePath()), Utf8(installation.PluginFile()));
    EXPECT_EQ(ToUtf8(manager.VersionCompatibilityFilePath()), Utf8(installation.CompatibilityFile()));
    log.Take();
    EXPECT_EQ(ToUtf8(manager.GetSSOServerAppPath()), Utf8(installation.ServerFolder()));
    EXPECT_TRUE(manager.FindClientConfigFile());
    EXPECT_THAT(log.Take(), IsEmpty());
}

TEST_F(Manager, TheChainResolvesInItsOrder)
{
    installation.InstallWithoutPlugin();
    EXPECT_FALSE(manager.EnsureClientLoaded());
    const std::string config = Utf8(installation.ClientConfigFile());
    const std::string compatibility = Utf8(installation.CompatibilityFile());
    EXPECT_THAT(
        log.Take(),
        ElementsAre(
            InfoLine(ModuleLoaded()),
            InfoLine("Searching for client config file Orlindex.config in the following paths:\n" +
                     Lines({installation.HostFolder(), library})),
            InfoLine("Found client config file at " + config), InfoLine("Loading client config file " + config),
            InfoLine("Configuration to support both local and admin: No."),
            InfoLine("Unable to get Pellwick path from registry, failed with error: 2"),
            InfoLine("Searching for SSO server app Pellwick.exe in the following paths:\n" +
                     Lines({library, installation.HostFolder(), installation.ServerFolder()})),
            InfoLine("Found SSO server app at " + Utf8(installation.ServerFolder() / "Pellwick.exe")),
            InfoLine(
                "Searching for version compatibility file TALIXVersionCompatibility.config in the following paths:\n" +
                Lines({installation.ServerFolder()})),
            InfoLine("Found version compatibility file at " + compatibility),
            InfoLine("Searching for compatible client plugin version for Orlindex version 1.11.13.3 in version "
                     "compatibility file " +
                     compatibility),
            InfoLine("Found compatible client plugin for Orlindex version 1.11.13.3 in version compatibility file: " +
                     Utf8(installation.PluginFile())),
            ErrorLine("Client plugin module not found: " + Utf8(installation.PluginFile()))));
}

TEST_F(Manager, APluginThatIsRefusedIsNamedAndNeverLoaded)
{
    installation.Install("unsigned");
    EXPECT_FALSE(manager.EnsureClientLoaded());
    const std::string file = Utf8(installation.PluginFile());
    const auto lines = log.Take();
    ASSERT_GE(lines.size(), 3u);
    EXPECT_THAT(std::vector<LogLine>(lines.end() - 3, lines.end()),
                ElementsAre(InfoLine("******* Binary file: checking: " + file),
                            ErrorLine("Binary file: signature is invalid: " + file),
                            InfoLine("Not loaded client plugin module " + file)));
    EXPECT_EQ(GetModuleHandleW(installation.PluginFile().c_str()), nullptr);
}

TEST_F(Manager, TheModuleIsAnnouncedWithoutFileWhereTheLibraryIsUnknown)
{
    // The announcement contains the path of the module "Orlindex.dll" of this process, so it is unloaded first.
    while (FreeLibrary(GetModuleHandleW(ProductModuleName)))
    {
    }
    EXPECT_FALSE(manager.EnsureClientLoaded());
    EXPECT_EQ(log.Take().at(0), InfoLine("Orlindex.dll module loaded (Version: 1.11.13.3 Config: x64-Release File: )"));
}

TEST_F(Manager, ALoadedPluginReturnsEveryInterface)
{
    Install();
    EXPECT_TRUE(manager.EnsureClientLoaded());
    EXPECT_NE(manager.GetSSOClient(), nullptr);
    EXPECT_NE(manager.GetSSOClientPrivate(), nullptr);
    EXPECT_NE(manager.GetSSOClientModule(), nullptr);
    EXPECT_NE(manager.GetSSOServerManager(), nullptr);
    EXPECT_THAT(plugin->Log(), Not(Contains(Field(&LogLine::level, TALIXLog::Error))));
}

TEST_F(Manager, ALoadedPluginIsNotAnnouncedAgain)
{
    Install();
    EXPECT_TRUE(manager.EnsureClientLoaded());
    plugin->ClearJournal();
    EXPECT_TRUE(manager.EnsureClientLoaded());
    EXPECT_NE(manager.GetSSOClient(), nullptr);
    EXPECT_THAT(plugin->Log(), IsEmpty());
}

TEST_F(Manager, MessagesFromBeforeTheLoadReachThePluginsLoggerInOrder)
{
    Install();
    SetPluginLogger(nullptr);
    CapturedOutput output;
    DefaultLogFunction(L"early", TALIXLog::Info);
    DefaultLogFunction(L"early failure", TALIXLog::Error);
    EXPECT_TRUE(manager.EnsureClientLoaded());
    EXPECT_EQ(output.Take(), "early failure\n");
    const std::vector<LogLine> received = plugin->Log();
    ASSERT_GT(received.size(), 3u);
    EXPECT_EQ(received[0], InfoLine("early"));
    EXPECT_EQ(received[1], ErrorLine("early failure"));
    EXPECT_EQ(received[2], InfoLine(ModuleLoaded()));
}

struct NullInterface
{
    const char* name;
    PluginOperation getter;
    bool (*isNull)(SSOPathResolver& manager);
};

void PrintTo(const NullInterface& missing, std::ostream* stream)
{
    *stream << missing.name;
}

class ManagerWithoutInterface : public Manager, public testing::WithParamInterface<NullInterface>
{
};

TEST_P(ManagerWithoutInterface, LogsEachRequestAndReturnsNull)
{
    Install();
    plugin->Return(GetParam().getter, 0);
    ASSERT_TRUE(manager.EnsureClientLoaded());
    const std::string name = GetParam().name;
    const LogLine message =
        ErrorLine("Failed to obtain I" + name + ". ISSOClientFactory::Get" + name + " returned null.");
    for (int request = 0; request < 2; ++request)
    {
        plugin->ClearJournal();
        EXPECT_TRUE(GetParam().isNull(manager));
        EXPECT_THAT(plugin->Log(), ElementsAre(message));
    }
}

INSTANTIATE_TEST_SUITE_P(
    , ManagerWithoutInterface,
    testing::Values(NullInterface{"SSOClientModule", Factory::GetSSOClientModule,
                                  [](SSOPathResolver& manager) { return manager.GetSSOClientModule() == nullptr; }},
                    NullInterface{"SSOClient", Factory::GetSSOClient,
                                  [](SSOPathResolver& manager) { return manager.GetSSOClient() == nullptr; }},
                    NullInterface{"SSOClientPrivate", Factory::GetSSOClientPrivate,
                                  [](SSOPathResolver& manager) { return manager.GetSSOClientPrivate() == nullptr; }},
                    NullInterface{"SSOServerManager", Factory::GetSSOServerManager,
                                  [](SSOPathResolver& manager) { return manager.GetSSOServerManager() == nullptr; }}),
    [](const testing::TestParamInfo<NullInterface>& instance) { return std::string(instance.param.name); });

} // namespace OrlindexTest
