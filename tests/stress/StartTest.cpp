#include "StartTest.h"

#include <chrono>
#include <sstream>

#include <windows.h>

#include <psapi.h>

#include "orlindex/talix.h"
#include "support/Child.h"

namespace OrlindexTest {

StartFigures StartTest::StartInChild(const std::string& what, const std::filesystem::path& executable)
{
    ChildOutcome outcome = RunChild(what, executable);
    EXPECT_TRUE(outcome.passed) << what << ", exit code " << outcome.code << '\n' << outcome.output;
    StartFigures figures;
    std::istringstream(outcome.report) >> figures.result >> figures.milliseconds >> figures.peakKilobytes;
    figures.output = std::move(outcome.output);
    return figures;
}

void StartTest::StartAndReport()
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point began = Clock::now();
    const talix_status_code result = talix_init();
    const auto taken = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - began);
    EXPECT_THAT(result, testing::AnyOf(IdSuccess, IdClientUnavailable));
    if (result == IdSuccess)
    {
        EXPECT_EQ(talix_deinit(), IdSuccess);
    }
    PROCESS_MEMORY_COUNTERS counters{};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    std::ostringstream report;
    report << result << ' ' << taken.count() << ' ' << counters.PeakWorkingSetSize / 1024;
    ReportToParent(report.str());
}

} // namespace OrlindexTest
