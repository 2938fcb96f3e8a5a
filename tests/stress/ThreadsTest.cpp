// Many threads at once: starts, stops, calls, observers; a plugin that calls back, and one that throws.

#include <algorithm>
#include <functional>
#include <random>
#include <stdexcept>
#include <thread>

#include "TestScale.h"
#include "Watchdog.h"
#include "orlindex/IObserver.h"
#include "orlindex/SSOClientPrivate.h"
#include "orlindex/talix.h"
#include "support/Child.h"
#include "support/Handle.h"
#include "support/HostTest.h"
#include "support/PlatformImports.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;
using testing::AnyOf;

namespace {

using Clock = std::chrono::steady_clock;

constexpr int ThreadCount = 8;

/// The results of calls that run while another thread starts or stops the library.
bool IsDocumented(int result)
{
    return result == IdSuccess || result == IdNotInitialized || result == IdClientUnavailable || result == IdFailed;
}

class IgnoringObserver final : public IObserver
{
public:
    void OnLoggedIn(const std::int32_t& /*status*/) override {}
    void OnLoggedOut(const std::int32_t& /*status*/) override {}
    void OnAccountCreated(const std::int32_t& /*status*/) override {}
    void OnTokenRefreshed(const std::int32_t& /*status*/) override {}
    void OnTokenAvailable(const std::int32_t& /*status*/) override {}
    void OnServerChanged(const Server& /*server*/) override {}
    bool OnAboutToLogout() override { return true; }
    void OnLoginRestored() override {}
    void OnOtherEvent(const IdServicesConsts::IdServicesEvent& /*event*/) override {}
};

void TALIX_CALL Ignore(std::int32_t /*code*/, std::int32_t /*status*/, void* /*value*/) {}

} // namespace

class Threads : public HostTest
{
protected:
    /// Repeats `work` on many threads until the time is over.
    long long RunOnThreads(const std::function<void(int thread, std::minstd_rand& random)>& work)
    {
        const int seconds = ShortOrLong(4, 60);
        const Clock::time_point end = Clock::now() + std::chrono::seconds(seconds);
        std::atomic<long long> rounds = 0;
        std::vector<std::thread> threads;
        for (int thread = 0; thread < ThreadCount; ++thread)
            threads.emplace_back([&, thread]() {
                std::minstd_rand random(static_cast<unsigned>(thread + 1));
                while (Clock::now() < end)
                {
                    work(thread, random);
                    ++rounds;
                    watchdog.Pat();
                }
            });
        // The journal grows with every call.
        while (Clock::now() < end)
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            Plugin().ClearJournal();
        }
        for (std::thread& thread : threads)
            thread.join();
        PrintCount("seconds with 8 threads", seconds);
        return rounds;
    }

    void ExpectStopped()
    {
        EXPECT_FALSE(IdServicesMgr::IsInitialized()) << "no count is lost";
        EXPECT_EQ(IdServicesMgr::GetInstance(), nullptr);
        EXPECT_EQ(talix_clear_proxy_info(), IdNotInitialized);
        EXPECT_EQ(talix_dispatch_events(), IdNotInitialized);
        EXPECT_EQ(talix_init(), IdSuccess) << "a new start";
        EXPECT_EQ(talix_clear_proxy_info(), IdSuccess);
        EXPECT_EQ(talix_deinit(), IdSuccess);
    }

    Watchdog watchdog;
};

TEST_F(Threads, StartsStopsAndCallsOfManyThreadsBalance)
{
    InstallPlugin();
    std::atomic<long long> starts = 0;
    const long long rounds = RunOnThreads([&starts](int, std::minstd_rand& random) {
        const talix_status_code started = talix_init();
        EXPECT_EQ(started, IdSuccess);
        ++starts;
        for (unsigned calls = random() % 20; calls > 0; --calls)
        {
            // Until this thread's stop the library stays initialized, whatever the others do.
            EXPECT_EQ(talix_get_boolean(TALIX_KEY_INITIALIZED), 1);
            EXPECT_EQ(talix_clear_proxy_info(), IdSuccess);
            talix_get_server();
        }
        EXPECT_EQ(talix_deinit(), IdSuccess);
    });
    ExpectStopped();
    PrintCount("rounds of start, calls and stop by 8 threads", rounds);
}

/// Event callbacks are used on one thread at a time; the plugin keeps the observers of the class interface.
TEST_F(Threads, ObserversAndEventsGoTogetherWithStartsOfOtherThreads)
{
    InstallPlugin();
    const long long rounds = RunOnThreads([](int thread, std::minstd_rand& random) {
        EXPECT_EQ(IdServicesMgr::Initialize(), IdSuccess);
        if (thread == 0)
        {
            EXPECT_TRUE(IsDocumented(talix_add_event_callback(&Ignore, nullptr)));
            EXPECT_TRUE(IsDocumented(talix_dispatch_events()));
            EXPECT_TRUE(IsDocumented(talix_remove_event_callback(&Ignore)));
        }
        IgnoringObserver observer;
        // Made by the first starter, at the end of its start.
        if (IdServicesMgr* const services = IdServicesMgr::GetInstance(); services != nullptr && random() % 2 == 0)
        {
            EXPECT_EQ(services->AddObserver(&observer), IdSuccess);
            EXPECT_EQ(services->RemoveObserver(&observer), IdSuccess);
        }
        EXPECT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    });
    ExpectStopped();
    PrintCount("rounds of observers and events by 8 threads", rounds);
}

TEST_F(Threads, APluginMayCallBackFromInsideACallAndFromAThreadOfItsOwn)
{
    PluginControl& plugin = InstallPlugin();
    plugin.OnCall(Client::ClearProxyInfo, [](const CallArguments&) {
        SSOClientPrivate::GetSettingsPath();
        EXPECT_EQ(talix_get_boolean(TALIX_KEY_INITIALIZED), 1);
        std::thread([]() { talix_get_server(); }).join(); // Waits for ever if a lock is held over the call.
    });
    EXPECT_EQ(talix_init(), IdSuccess);
    const long long rounds =
        RunOnThreads([](int, std::minstd_rand&) { EXPECT_EQ(talix_clear_proxy_info(), IdSuccess); });
    EXPECT_EQ(talix_deinit(), IdSuccess);
    ExpectStopped();
    PrintCount("rounds with a plugin that calls back", rounds);
}

TEST_F(Threads, APluginThatThrowsLeavesNoLockAndNoCountBehind)
{
    PluginControl& plugin = InstallPlugin();
    std::atomic<int> calls = 0;
    const auto throwNowAndThen = [&calls](const CallArguments&) {
        if (++calls % 3 == 0)
            throw std::runtime_error("the plugin");
    };
    plugin.OnCall(Client::ClearProxyInfo, throwNowAndThen);
    plugin.OnCall(Module::Initialize, throwNowAndThen);
    plugin.OnCall(Module::Uninitialize, throwNowAndThen);
    std::atomic<int> failed = 0;
    const long long rounds = RunOnThreads([&failed](int, std::minstd_rand&) {
        const talix_status_code started = talix_init();
        EXPECT_THAT(started, AnyOf(IdSuccess, IdFailed));
        if (started != IdSuccess)
        {
            ++failed;
            return;
        }
        EXPECT_TRUE(IsDocumented(talix_clear_proxy_info()));
        EXPECT_THAT(talix_deinit(), AnyOf(IdSuccess, IdFailed));
    });
    EXPECT_GT(calls, 2);
    plugin.OnCall(Client::ClearProxyInfo, [](const CallArguments&) {});
    plugin.OnCall(Module::Initialize, [](const CallArguments&) {});
    plugin.OnCall(Module::Uninitialize, [](const CallArguments&) {});
    ExpectStopped();
    PrintCount("rounds with a plugin that throws", rounds);
    PrintCount("starts that the plugin made fail", failed);
}

TEST_F(Threads, AStartThatFailsWhileAnotherThreadStartsAndStopsKeepsTheCount)
{
    installation.Install();
    const Handle verifying(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const Handle proceed(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const WinVerifyTrustDouble verification([&](HWND, GUID*, LPVOID) -> LONG {
        SetEvent(verifying.get());
        WaitForSingleObject(proceed.get(), INFINITE);
        return TRUST_E_NOSIGNATURE;
    });
    int first = 0;
    int stopped = 0;
    std::thread starter([&first]() { first = IdServicesMgr::Initialize(); });
    WaitForSingleObject(verifying.get(), INFINITE);
    EXPECT_EQ(IdServicesMgr::Initialize(), IdSuccess) << "counted while the first one loads";
    std::thread stopper([&stopped]() { stopped = IdServicesMgr::Uninitialize(); });
    // The result is the same if the stop already waits for the mutex and if it comes later.
    SetEvent(proceed.get());
    starter.join();
    stopper.join();
    EXPECT_EQ(first, IdClientUnavailable);
    EXPECT_EQ(stopped, IdSuccess);
    EXPECT_FALSE(IdServicesMgr::IsInitialized());
    EXPECT_EQ(IdServicesMgr::Initialize(), IdClientUnavailable)
        << "a first start again, neither counted nor below zero";
    EXPECT_FALSE(IdServicesMgr::IsInitialized());
}

/// Tests the watchdog: it ends a process that stalls, and prints where it stalls.
TEST_F(Threads, AStallIsNoticed)
{
    if (ChildInput())
    {
        const Watchdog impatient(std::chrono::seconds(1));
        Sleep(INFINITE);
    }
    const ChildOutcome outcome = RunChild("stall");
    EXPECT_EQ(outcome.code, 99U);
    EXPECT_THAT(outcome.output, testing::HasSubstr("orlindex_stress_tests.exe+0x"));
}

} // namespace OrlindexTest
