// A plugin module of the library's compiler, or of another one: tests/microsoft runs these tests with the modules of
// another build. docs/plugin-contract.md says what they show.

#include <cstdio>
#include <thread>

#include "orlindex/IdErrorCode.h"
#include "orlindex/talix.h"
#include "support/Child.h"
#include "support/HostTest.h"
#include "support/Platform.h"

namespace OrlindexTest {

using testing::AllOf;
using testing::Ne;

using PluginCompiler = HostTest;

TEST_F(PluginCompiler, AnExceptionOfThePluginIsContainedOrEndsTheProcess)
{
    if (ChildInput())
    {
        EndAtUnhandledExceptions();
        ASSERT_EQ(talix_init(), IdSuccess);
        // On another thread: on the test's own, GoogleTest handles the platform's exceptions with some compilers.
        std::thread([]() { ReportToParent(std::to_string(talix_refresh_token())); }).join();
        return;
    }
    const bool oneCompiler = InstallPlugin("throwing").IsOfThisCompiler();
    const ChildOutcome outcome = RunChild("call");
    if (oneCompiler)
    {
        EXPECT_TRUE(outcome.passed) << outcome.output;
        EXPECT_EQ(outcome.report, std::to_string(IdFailed));
    }
    else
    {
        EXPECT_THAT(outcome.code, AllOf(Ne(0), Ne(WAIT_TIMEOUT))) << outcome.output;
        EXPECT_EQ(outcome.report, "") << "the call returned";
    }
    std::printf("exception of the plugin: %s, exit code 0x%08lX\n", oneCompiler ? "contained" : "ends the process",
                outcome.code);
}

} // namespace OrlindexTest
