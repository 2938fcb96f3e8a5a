// A plugin module of the library's compiler, or of another one: tests/microsoft runs these tests with the modules of
// another build. docs/plugin-contract.md says what they show.

#include <cstdio>

#include "orlindex/IdErrorCode.h"
#include "orlindex/talix.h"
#include "support/Child.h"
#include "support/HostTest.h"

namespace OrlindexTest {

using PluginCompiler = HostTest;

TEST_F(PluginCompiler, AnExceptionOfThePluginIsContainedOrEndsTheProcess)
{
    if (ChildInput())
    {
        ASSERT_EQ(talix_init(), IdSuccess);
        return ReportToParent(std::to_string(talix_refresh_token()));
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
        EXPECT_NE(outcome.code, 0);
        EXPECT_EQ(outcome.report, "") << "the call returned";
    }
    std::printf("exception of the plugin: %s, exit code 0x%08lX\n", oneCompiler ? "contained" : "ends the process",
                outcome.code);
}

} // namespace OrlindexTest
