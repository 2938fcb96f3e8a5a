// Many rounds of start and stop leave only the memory that the design leaves on purpose.

#include <windows.h>

#include <psapi.h>

#include "LeakCheck.h"
#include "TestScale.h"
#include "orlindex/talix.h"
#include "support/HostTest.h"
#include "support/Platform.h"

namespace OrlindexTest {

namespace {

/// The private memory of this process, in bytes.
long long PrivateBytes()
{
    PROCESS_MEMORY_COUNTERS counters{};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return static_cast<long long>(counters.PagefileUsage);
}

} // namespace

class Soak : public HostTest
{
protected:
    static constexpr int WarmUp = 100;
    /// The platform sometimes opens a few handles of its own, once in a process: sixteen entries of the handle table.
    static constexpr std::intptr_t MostPlatformHandles = 16 * 4;

    void Rounds(int count)
    {
        for (int round = 0; round < count; ++round)
        {
            ASSERT_EQ(talix_init(), IdSuccess);
            ASSERT_EQ(talix_clear_proxy_info(), IdSuccess);
            ASSERT_EQ(talix_deinit(), IdSuccess);
            Plugin().ClearJournal();
        }
    }
};

TEST_F(Soak, StartsAndStopsLeaveOnlyWhatIsLeftOnPurpose)
{
    // The manager of a stopped library is never destroyed, for threads that still use it: its paths and settings take
    // under 4 KB. The platform's heap grows by whole pages.
    constexpr long long largestGrowth = 6144;
    InstallPlugin();
    const int rounds = ShortOrLong(400, 10000);
    Rounds(WarmUp);
    const long long before = PrivateBytes();
    const std::intptr_t handle = MeasureOpenHandles();
    Rounds(rounds);
    const long long growth = (PrivateBytes() - before) / rounds;
    EXPECT_LE(growth, largestGrowth);
    EXPECT_LE(MeasureOpenHandles(), handle + MostPlatformHandles) << "handles were left open";
    PrintCount("rounds of start and stop", rounds);
    PrintCount("private bytes left by a round", growth);
}

TEST_F(Soak, CallsLeaveNothing)
{
    InstallPlugin();
    ASSERT_EQ(talix_init(), IdSuccess);
    const int calls = ShortOrLong(20000, 1000000);
    const auto call = [this](int count) {
        char text[64];
        talix_buffer buffer{text, sizeof text};
        for (int i = 0; i < count; ++i)
        {
            ASSERT_EQ(talix_get_token(&buffer), IdSuccess);
            if (i % 256 == 0)
                Plugin().ClearJournal();
        }
    };
    call(2000);
    const long long before = PrivateBytes();
    const std::intptr_t handle = MeasureOpenHandles();
    call(calls);
    const long long growth = PrivateBytes() - before;
    EXPECT_LE(growth, 256 * 1024);
    EXPECT_LE(MeasureOpenHandles(), handle + MostPlatformHandles);
    PrintCount("text calls", calls);
    PrintCount("private bytes left by all text calls", growth);
    EXPECT_EQ(talix_deinit(), IdSuccess);
}

} // namespace OrlindexTest
