// Hosts and servers that are killed at any moment: nothing that was reported is lost, and nothing hangs.

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>

#include "Environment.h"
#include "OtherHost.h"
#include "server/ServerInstance.h"
#include "support/Patience.h"

namespace Kestrany::Agent {

namespace {

constexpr std::size_t Hosts = 4;
constexpr int Rounds = 50;

/// A round that takes longer hangs.
constexpr DWORD RoundLimit = OrlindexTest::PatienceMilliseconds;

/// Milliseconds within which the kill falls.
constexpr unsigned int Spread = 25;

unsigned int SeedOf(unsigned int part)
{
    // For another run, or to repeat one that failed: set the variable to the printed seed.
    const char* given = std::getenv("AGENT_TEST_SEED");
    return (given == nullptr ? 20'260'101u : static_cast<unsigned int>(std::strtoul(given, nullptr, 10))) + part;
}

/// scripts/test.sh collects these lines, and adds up the parts.
void PrintCount(const char* name, int value)
{
    std::printf("count: %s = %d\n", name, value);
}

class KillTest : public testing::TestWithParam<unsigned int>
{
protected:
    void StartWorker(std::size_t index)
    {
        workers_[index] = std::make_unique<OtherHost>("worker", std::vector{std::to_string(random_() % 1'000'000)});
    }

    /// Whether the worker completes a round from now on. The first signal may belong to the round before.
    static bool MakesProgress(const OtherHost& worker)
    {
        const HANDLE objects[] = {worker.Progress(), worker.Process()};
        ResetEvent(worker.Progress());
        for (int signals = 0; signals < 2; ++signals)
        {
            if (WaitForMultipleObjects(2, objects, FALSE, RoundLimit) != WAIT_OBJECT_0)
                return false;
        }
        return true;
    }

    bool AllMakeProgress() const
    {
        for (const auto& worker : workers_)
        {
            if (!MakesProgress(*worker))
                return false;
        }
        return true;
    }

    void KillServer()
    {
        const auto processId = FindServer(DefaultIdentity);
        const Handle process(processId ? OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, *processId) : nullptr);
        if (!process)
            return;
        TerminateProcess(process.get(), 9);
        ++serverKills_;
    }

    /// While another host starts. Calls wait for the server's end meanwhile.
    void QuitServerAndKillHost(std::size_t index)
    {
        const auto processId = FindServer(DefaultIdentity);
        const Handle process(processId ? OpenProcess(SYNCHRONIZE, FALSE, *processId) : nullptr);
        const Handle quit(processId ? OpenEventW(EVENT_MODIFY_STATE, FALSE, QuitEventName(*processId).c_str())
                                    : nullptr);
        KillHost(index);
        if (!process || !quit)
            return;
        SetEvent(quit.get());
        EXPECT_EQ(WaitForSingleObject(process.get(), RoundLimit), WAIT_OBJECT_0);
        ++serverQuits_;
    }

    void KillHost(std::size_t index)
    {
        workers_[index]->Kill();
        StartWorker(index);
        ++hostKills_;
    }

    const unsigned int seed_ = SeedOf(GetParam());
    std::mt19937 random_{seed_};
    std::array<std::unique_ptr<OtherHost>, Hosts> workers_;
    int serverKills_ = 0;
    int serverQuits_ = 0; ///< Each with a host's kill.
    int hostKills_ = 0;
};

TEST_P(KillTest, NothingThatWasReportedIsLost)
{
    const ULONGLONG start = GetTickCount64();
    for (std::size_t index = 0; index < Hosts; ++index)
        StartWorker(index);
    ASSERT_TRUE(AllMakeProgress()) << "AGENT_TEST_SEED=" << seed_ - GetParam();
    for (int round = 0; round < Rounds; ++round)
    {
        // Some moment of the workers' rounds.
        WaitForSingleObject(workers_[0]->Process(), random_() % Spread);
        const unsigned int kind = random_() % 4;
        if (kind == 0)
            QuitServerAndKillHost(random_() % Hosts);
        else if (kind == 1)
            KillHost(random_() % Hosts);
        else
            KillServer();
        ASSERT_TRUE(AllMakeProgress()) << "round " << round << ", AGENT_TEST_SEED=" << seed_ - GetParam();
    }
    for (const auto& worker : workers_)
        worker->Leave();
    for (const auto& worker : workers_)
        EXPECT_EQ(worker->ExitCode(), 0u);
    std::printf("seed %u, %llu ms\n", seed_ - GetParam(), GetTickCount64() - start);
    PrintCount("rounds of killed servers and hosts", Rounds);
    PrintCount("servers killed", serverKills_);
    PrintCount("hosts killed", hostKills_);
    EXPECT_EQ(serverKills_ + hostKills_, Rounds);
    EXPECT_GT(serverQuits_, 0);
}

INSTANTIATE_TEST_SUITE_P(Parts, KillTest, testing::Range(0u, 4u));

} // namespace

} // namespace Kestrany::Agent
