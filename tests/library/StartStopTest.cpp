// Initialize and Uninitialize: counting, starting, stopping and starting again.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "orlindex/SSOClientPrivate.h"
#include "orlindex/SSOServerManager.h"
#include "support/HostTest.h"
#include "support/PlatformImports.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

namespace {

/// Waits at the end of a scope, if there is something to wait for.
struct WaitAtEnd
{
    std::promise<void>* event;

    ~WaitAtEnd()
    {
        if (event != nullptr)
            event->get_future().wait();
    }
};

} // namespace

class StartStop : public HostTest
{
};

TEST_F(StartStop, InitializeMakesTheLibraryReady)
{
    EXPECT_FALSE(IdServicesMgr::IsInitialized());
    EXPECT_EQ(IdServicesMgr::GetInstance(), nullptr);
    installation.Install();
    EXPECT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_TRUE(IdServicesMgr::IsInitialized());
    EXPECT_NE(IdServicesMgr::GetInstance(), nullptr);
    EXPECT_TRUE(IsLoaded(installation.PluginFile()));
}

TEST_F(StartStop, InitializeTwiceThenUninitializeOnceStaysInitialized)
{
    PluginControl& plugin = InstallPlugin();
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    IdServicesMgr* const manager = IdServicesMgr::GetInstance();
    const auto started = plugin.Calls();
    EXPECT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_EQ(IdServicesMgr::GetInstance(), manager);
    EXPECT_EQ(plugin.Calls(), started) << "only the first call starts anything";

    EXPECT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    EXPECT_TRUE(IdServicesMgr::IsInitialized());
    EXPECT_EQ(IdServicesMgr::GetInstance(), manager);
    EXPECT_EQ(plugin.Calls(), started);
    plugin.Return(Client::IsLoggedIn, 1);
    EXPECT_TRUE(manager->IsLoggedIn());
    EXPECT_THAT(plugin.Calls(Factory::Interface), SizeIs(6)) << "the interfaces stay cached";

    EXPECT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    EXPECT_FALSE(IdServicesMgr::IsInitialized());
    EXPECT_EQ(IdServicesMgr::GetInstance(), nullptr);
    EXPECT_THAT(plugin.Calls(Module::Interface),
                ElementsAre(Call(Module::Initialize, "false"), Call(Module::Uninitialize)));
}

TEST_F(StartStop, UninitializeWithoutInitializeReturnsSuccessAndDoesNothing)
{
    PluginControl& plugin = InstallPlugin();
    CapturedOutput output;
    EXPECT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    EXPECT_EQ(output.Take(), "");
    EXPECT_THAT(plugin.Calls(), IsEmpty());
    EXPECT_FALSE(IdServicesMgr::IsInitialized());

    EXPECT_EQ(IdServicesMgr::Initialize(), IdSuccess) << "the count did not fall below zero";
    EXPECT_TRUE(IdServicesMgr::IsInitialized());
    EXPECT_THAT(plugin.Log().front().text, StartsWith("Orlindex.dll module loaded "));
    EXPECT_THAT(plugin.Calls(FactoryFunction), SizeIs(1));
}

TEST_F(StartStop, UninitializeAfterTheLastOneDoesNotReachThePluginAgain)
{
    PluginControl& plugin = InstallPlugin();
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    plugin.ClearJournal();
    EXPECT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    EXPECT_THAT(plugin.Calls(), IsEmpty());
    EXPECT_THAT(plugin.Log(), IsEmpty());
}

TEST_F(StartStop, InitializeWithNoPluginAvailableReturnsClientUnavailable)
{
    CapturedOutput output;
    EXPECT_EQ(IdServicesMgr::Initialize(), IdClientUnavailable);
    EXPECT_THAT(output.Take(), HasSubstr("Client plugin module not found: \n"));
    EXPECT_FALSE(IdServicesMgr::IsInitialized());
    EXPECT_EQ(IdServicesMgr::GetInstance(), nullptr);
}

TEST_F(StartStop, AFailedStartIsNotRetriedByLaterCalls)
{
    // Not even if everything is installed by now: a failed attempt is final for the manager.
    ASSERT_EQ(IdServicesMgr::Initialize(), IdClientUnavailable);
    installation.Install();
    CapturedOutput output;
    EXPECT_EQ(IdServicesMgr::Initialize(), IdClientUnavailable);
    EXPECT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    EXPECT_EQ(IdServicesMgr::Initialize(), IdClientUnavailable);
    EXPECT_EQ(output.Take(), "");
    EXPECT_FALSE(IsLoaded(installation.PluginFile()));
    EXPECT_FALSE(IdServicesMgr::IsInitialized());
}

TEST_F(StartStop, ThePluginStaysInTheProcessAfterTheLastUninitialize)
{
    installation.Install();
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    EXPECT_TRUE(IsLoaded(installation.PluginFile()));
}

TEST_F(StartStop, ANewStartAfterTheLastStopResolvesEveryPathAgain)
{
    PluginControl& plugin = InstallPlugin();
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    plugin.ClearJournal();
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);

    std::vector<std::string> steps;
    for (const LogLine& line : plugin.Log())
        steps.push_back(line.text);
    for (const std::string& step :
         {std::string("Orlindex.dll module loaded (Version: 1.11.13.3 Config: x64-Release File: ") +
              Utf8(installation.HostFolder() / "Orlindex.dll") + ')',
          "Loading client config file " + Utf8(installation.ClientConfigFile()),
          "Found SSO server app at " + Utf8(installation.ServerFolder() / "Pellwick.exe"),
          "Found version compatibility file at " + Utf8(installation.CompatibilityFile()),
          "Binary file: is valid: " + Utf8(installation.PluginFile()),
          "Successfully loaded client plugin module " + Utf8(installation.PluginFile())})
        EXPECT_THAT(steps, Contains(step));
    EXPECT_THAT(plugin.Calls(FactoryFunction), SizeIs(1));
    EXPECT_THAT(plugin.Calls(Module::Interface), ElementsAre(Call(Module::Initialize, "false")));
}

TEST_F(StartStop, ANewStartMayFindAnotherPlugin)
{
    installation.Install();
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);

    const auto other = installation.ServerFolder() / "OtherClient.dll";
    installation.CopyPlugin("asia", other);
    installation.WriteCompatibilityFile({CompatibilityEntry{"%SSOServerAppPath%\\OtherClient.dll"}});
    PluginControl plugin(other);
    plugin.Return(Client::IsLoggedIn, 1);
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_TRUE(IdServicesMgr::GetInstance()->IsLoggedIn());
    SSOClientPrivate::GetSettingsPath();
    SSOServerManager::IsSSOServerProcessReady();
    EXPECT_THAT(plugin.Calls(Factory::Interface),
                ElementsAre(Call(Factory::GetSSOServerManager), Call(Factory::GetLoggerSource),
                            Call(Factory::GetSSOClientModule), Call(Factory::GetSSOServerManager),
                            Call(Factory::GetSSOClient), Call(Factory::GetSSOClientPrivate)));
    EXPECT_THAT(plugin.Calls(Module::Interface), ElementsAre(Call(Module::Initialize, "false")));
    EXPECT_THAT(plugin.Calls(Client::Interface), ElementsAre(Call(Client::IsLoggedIn)));
    EXPECT_THAT(plugin.Calls(Private::Interface), ElementsAre(Call(Private::GetSettingsPath)));
    EXPECT_EQ(plugin.Calls(ServerManager::Interface).back(), Call(ServerManager::IsSSOServerProcessReady));
}

TEST_F(StartStop, ANewStartMayFail)
{
    installation.Install();
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    installation.WriteCompatibilityFile("{}");
    EXPECT_EQ(IdServicesMgr::Initialize(), IdClientUnavailable);
    EXPECT_FALSE(IdServicesMgr::IsInitialized());
    EXPECT_EQ(IdServicesMgr::GetInstance(), nullptr);
}

TEST_F(StartStop, MessagesAfterTheLastStopStillReachThePluginsLogger)
{
    PluginControl& plugin = InstallPlugin();
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    plugin.ClearJournal();
    installation.WriteCompatibilityFile("{}");
    CapturedOutput output;
    ASSERT_EQ(IdServicesMgr::Initialize(), IdClientUnavailable);
    EXPECT_EQ(output.Take(), "");
    EXPECT_EQ(plugin.Log().back(), (LogLine{Error, "Client plugin module not found: "}));
}

TEST_F(StartStop, AClientThatThePluginCreatesOnlyWhileItIsInitializedServes)
{
    PluginControl& plugin = InstallPlugin();
    const std::int64_t client = plugin.ResultOf(Factory::GetSSOClient);
    plugin.Return(Factory::GetSSOClient, 0);
    plugin.OnCall(Module::Initialize, [&](const CallArguments&) { plugin.Return(Factory::GetSSOClient, client); });
    plugin.Return(Client::IsLoggedIn, 1);
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_TRUE(IdServicesMgr::GetInstance()->IsLoggedIn());
    const auto calls = plugin.Calls();
    ASSERT_GE(calls.size(), 3U);
    EXPECT_THAT(std::vector<std::string>(calls.end() - 3, calls.end()),
                ElementsAre(Call(Module::Initialize, "false"), Call(Factory::GetSSOClient), Call(Client::IsLoggedIn)));
}

TEST_F(StartStop, AClientThatIsThereBeforeTheModuleIsInitializedIsNotAskedForAgain)
{
    PluginControl& plugin = InstallPlugin();
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_EQ(plugin.Calls().back(), Call(Module::Initialize, "false"));
}

TEST_F(StartStop, AFactoryReturningNullForTheClientDoesNotFailTheStart)
{
    PluginControl& plugin = InstallPlugin();
    plugin.Return(Factory::GetSSOClient, 0);
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    ASSERT_NE(IdServicesMgr::GetInstance(), nullptr);
    plugin.ClearJournal();
    EXPECT_FALSE(IdServicesMgr::GetInstance()->IsLoggedIn());
    EXPECT_FALSE(IdServicesMgr::GetInstance()->HasEvent());
    const LogLine reason{Error, "Failed to obtain ISSOClient. ISSOClientFactory::GetSSOClient returned null."};
    EXPECT_THAT(plugin.Log(), ElementsAre(reason, reason));
}

TEST_F(StartStop, APluginThatThrowsWhenItIsAskedForItsClientLeavesNoInstanceAndTheNextStartBeginsItsModuleAgain)
{
    PluginControl& plugin = InstallPlugin();
    const std::int64_t client = plugin.ResultOf(Factory::GetSSOClient);
    plugin.Return(Factory::GetSSOClient, 0);
    plugin.OnCall(Module::Initialize, [&](const CallArguments&) {
        plugin.OnCall(Factory::GetSSOClient, [](const CallArguments&) { throw std::runtime_error("no client"); });
    });
    EXPECT_THROW(IdServicesMgr::Initialize(), std::runtime_error);
    EXPECT_FALSE(IdServicesMgr::IsInitialized());
    EXPECT_EQ(IdServicesMgr::GetInstance(), nullptr);

    plugin.OnCall(Module::Initialize, [](const CallArguments&) {});
    plugin.OnCall(Factory::GetSSOClient, [](const CallArguments&) {});
    plugin.Return(Factory::GetSSOClient, client);
    plugin.Return(Client::IsLoggedIn, 1);
    EXPECT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_THAT(plugin.Calls(Module::Interface),
                ElementsAre(Call(Module::Initialize, "false"), Call(Module::Initialize, "false")));
    ASSERT_NE(IdServicesMgr::GetInstance(), nullptr);
    EXPECT_TRUE(IdServicesMgr::GetInstance()->IsLoggedIn());
}

TEST_F(StartStop, TheInstanceIsNewAfterANewStart)
{
    installation.Install();
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    IdServicesMgr::GetInstance()->GetProductConfigObj()->SetProductLineName("first");
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    char text[8] = {};
    EXPECT_EQ(IdServicesMgr::GetInstance()->GetProductConfigObj()->GetProductLineName(text, sizeof text), 0);
}

TEST_F(StartStop, ASecondInitializeReturnsAtOnceWhileTheFirstIsStillStarting)
{
    PluginControl& plugin = InstallPlugin();
    std::promise<void> starting;
    std::promise<void> proceed;
    plugin.OnCall(Module::Initialize, [&](const CallArguments&) {
        starting.set_value();
        proceed.get_future().wait();
    });
    auto first = std::async(std::launch::async, []() { return IdServicesMgr::Initialize(); });
    starting.get_future().wait();
    EXPECT_TRUE(IdServicesMgr::IsInitialized());
    EXPECT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_EQ(IdServicesMgr::GetInstance(), nullptr) << "the instance is made last";
    proceed.set_value();
    EXPECT_EQ(first.get(), IdSuccess);
    EXPECT_NE(IdServicesMgr::GetInstance(), nullptr);
    EXPECT_THAT(plugin.Calls(Module::Interface), ElementsAre(Call(Module::Initialize, "false")));

    EXPECT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    EXPECT_TRUE(IdServicesMgr::IsInitialized()) << "both calls were counted";
    EXPECT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    EXPECT_FALSE(IdServicesMgr::IsInitialized());
}

TEST_F(StartStop, UninitializeWaitsForAnInitializeThatIsStillStarting)
{
    PluginControl& plugin = InstallPlugin();
    std::promise<void> starting;
    std::promise<void> proceed;
    plugin.OnCall(Module::Initialize, [&](const CallArguments&) {
        starting.set_value();
        proceed.get_future().wait();
    });
    auto first = std::async(std::launch::async, []() { return IdServicesMgr::Initialize(); });
    starting.get_future().wait();
    std::promise<void> stopping;
    auto stop = std::async(std::launch::async, [&stopping]() {
        stopping.set_value();
        return IdServicesMgr::Uninitialize();
    });
    stopping.get_future().wait();
    EXPECT_EQ(stop.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
    EXPECT_THAT(plugin.Calls(Module::Interface), ElementsAre(Call(Module::Initialize, "false")));
    proceed.set_value();
    EXPECT_EQ(first.get(), IdSuccess);
    EXPECT_EQ(stop.get(), IdSuccess);
    EXPECT_FALSE(IdServicesMgr::IsInitialized());
    EXPECT_EQ(IdServicesMgr::GetInstance(), nullptr);
    EXPECT_THAT(plugin.Calls(Module::Interface),
                ElementsAre(Call(Module::Initialize, "false"), Call(Module::Uninitialize)));
}

TEST_F(StartStop, AStartThatFailsTakesItsCountBackBeforeAStopThatWaitsForItRuns)
{
    PluginControl& plugin = InstallPlugin();
    std::promise<void> starting;
    std::promise<void> proceed;
    plugin.OnCall(Module::Initialize, [&](const CallArguments&) {
        starting.set_value();
        proceed.get_future().wait();
        throw std::runtime_error("the start fails");
    });
    DWORD starter = 0;
    auto start = std::async(std::launch::async, [&starter]() {
        starter = GetCurrentThreadId();
        return IdServicesMgr::Initialize();
    });
    starting.get_future().wait();

    std::promise<void> waiting;
    std::promise<void> stopped;
    std::atomic<void*> mutex = nullptr;
    bool left = false;
    const LockMutexDouble wait([&](auto* object, auto... arguments) {
        if (GetCurrentThreadId() != starter && mutex == nullptr)
        {
            mutex = object;
            waiting.set_value();
        }
        return LockMutexDouble::Original(object, arguments...);
    });
    const UnlockMutexDouble leave([&](auto* object) {
        const bool leaves = GetCurrentThreadId() == starter && object == mutex && !std::exchange(left, true);
        const WaitAtEnd afterwards{leaves ? &stopped : nullptr}; // The start-up continues only after the stop.
        return UnlockMutexDouble::Original(object);
    });
    auto stop = std::async(std::launch::async, [&stopped]() {
        const IdErrorCode result = IdServicesMgr::Uninitialize();
        stopped.set_value();
        return result;
    });
    waiting.get_future().wait();
    proceed.set_value();
    EXPECT_EQ(stop.get(), IdSuccess);
    EXPECT_THROW(start.get(), std::runtime_error);
    EXPECT_TRUE(left) << "the stop waited for the mutex";
    EXPECT_THAT(plugin.Calls(Module::Interface), ElementsAre(Call(Module::Initialize, "false")))
        << "there was nothing to stop";

    plugin.OnCall(Module::Initialize, [](const CallArguments&) {});
    EXPECT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_TRUE(IdServicesMgr::IsInitialized()) << "the count did not fall below zero";
    EXPECT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    EXPECT_FALSE(IdServicesMgr::IsInitialized());
}

TEST_F(StartStop, AStopInsideAStartOrAStopRaisesTheErrorOfTheMutex)
{
    PluginControl& plugin = InstallPlugin();
    int raised = 0;
    const auto stop = [&raised](const CallArguments&) {
        try
        {
            IdServicesMgr::Uninitialize();
        }
        catch (const std::system_error& error)
        {
            // By number: the category is that of the library's own runtime.
            raised += error.code().value() == static_cast<int>(std::errc::resource_deadlock_would_occur);
        }
    };
    plugin.OnCall(Module::Initialize, stop);
    plugin.OnCall(Module::Uninitialize, stop);
    EXPECT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_EQ(raised, 1);
    EXPECT_TRUE(IdServicesMgr::IsInitialized());
    EXPECT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    EXPECT_EQ(raised, 2);
    EXPECT_FALSE(IdServicesMgr::IsInitialized());
}

TEST_F(StartStop, AStopThatFindsNoModuleForgetsNothing)
{
    PluginControl& plugin = InstallPlugin();
    const std::int64_t factory = plugin.ResultOf(FactoryFunction);
    plugin.Return(FactoryFunction, 0);
    std::promise<void> loading;
    std::promise<void> proceed;
    plugin.OnCall(FactoryFunction, [&](const CallArguments&) {
        loading.set_value();
        proceed.get_future().wait();
    });
    auto first = std::async(std::launch::async, []() { return IdServicesMgr::Initialize(); });
    loading.get_future().wait();
    EXPECT_EQ(IdServicesMgr::Initialize(), IdSuccess) << "counted while the first one still loads";
    proceed.set_value();
    EXPECT_EQ(first.get(), IdClientUnavailable);
    EXPECT_TRUE(IdServicesMgr::IsInitialized());
    EXPECT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    EXPECT_FALSE(IdServicesMgr::IsInitialized());

    // With a new manager the next start would succeed.
    plugin.OnCall(FactoryFunction, [](const CallArguments&) {});
    plugin.Return(FactoryFunction, factory);
    int verifications = 0;
    const WinVerifyTrustDouble count([&verifications](HWND window, GUID* action, LPVOID data) {
        ++verifications;
        return WinVerifyTrustDouble::Original(window, action, data);
    });
    EXPECT_EQ(IdServicesMgr::Initialize(), IdClientUnavailable);
    EXPECT_EQ(verifications, 0);
    EXPECT_THAT(plugin.Calls(), ElementsAre(Call(FactoryFunction)));
}

TEST_F(StartStop, AStartThatCountsDuringTheLastStopIsNotLost)
{
    PluginControl& plugin = InstallPlugin();
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    std::future<IdErrorCode> start;
    plugin.OnCall(Module::Uninitialize, [&start](const CallArguments&) {
        start = std::async(std::launch::async, []() { return IdServicesMgr::Initialize(); });
        while (!IdServicesMgr::IsInitialized())
            std::this_thread::yield();
    });
    EXPECT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    EXPECT_EQ(start.get(), IdSuccess);
    EXPECT_TRUE(IdServicesMgr::IsInitialized());
    EXPECT_NE(IdServicesMgr::GetInstance(), nullptr);
    EXPECT_THAT(
        plugin.Calls(Module::Interface),
        ElementsAre(Call(Module::Initialize, "false"), Call(Module::Uninitialize), Call(Module::Initialize, "false")));
}

TEST_F(StartStop, TheInstanceIsGoneWhenThePluginIsToldToStop)
{
    PluginControl& plugin = InstallPlugin();
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    const void* instance = &plugin;
    plugin.OnCall(Module::Uninitialize, [&instance](const CallArguments&) { instance = IdServicesMgr::GetInstance(); });
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    EXPECT_EQ(instance, nullptr);
}

TEST_F(StartStop, ThePluginServesWhileItIsToldToStop)
{
    PluginControl& plugin = InstallPlugin();
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    plugin.OnCall(Module::Uninitialize, [](const CallArguments&) { SSOClientPrivate::GetSettingsPath(); });
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    EXPECT_THAT(plugin.Calls(Private::Interface), ElementsAre(Call(Private::GetSettingsPath)));
    EXPECT_THAT(plugin.Calls(FactoryFunction), SizeIs(1)) << "its interfaces are forgotten afterwards";
    const std::vector<LogLine> log = plugin.Log();
    EXPECT_EQ(std::count_if(log.begin(), log.end(),
                            [](const LogLine& line) { return line.text.rfind("Orlindex.dll module loaded ", 0) == 0; }),
              1);
}

} // namespace OrlindexTest
