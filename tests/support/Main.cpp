// Runs every selected test as a host process of its own, see HostProcess.h. GoogleTest's filter and list options work
// as usual; the others have no effect.

#include <cstdio>
#include <stdexcept>

#include <fcntl.h>
#include <io.h>

#include <gtest/gtest.h>

#include "HostProcess.h"

namespace {

/// GoogleTest evaluates its filter options only while it runs or lists tests, so this lists them without output.
void SelectTests()
{
    std::fflush(stdout);
    const int output = _dup(1);
    const int nowhere = _open("NUL", _O_WRONLY);
    _dup2(nowhere, 1);
    _close(nowhere);
    testing::GTEST_FLAG(list_tests) = true;
    const int listed = RUN_ALL_TESTS();
    std::fflush(stdout);
    _dup2(output, 1);
    _close(output);
    if (listed != 0)
        throw std::runtime_error("the tests cannot be listed");
}

int RunAsHost()
{
    const int result = RUN_ALL_TESTS();
    if (testing::UnitTest::GetInstance()->test_to_run_count() == 1)
        OrlindexTest::ReportEnd();
    return result;
}

int RunSelectedTests()
{
    SelectTests();
    const testing::UnitTest& all = *testing::UnitTest::GetInstance();
    int run = 0;
    int failed = 0;
    for (int i = 0; i < all.total_test_suite_count(); ++i)
    {
        const testing::TestSuite& suite = *all.GetTestSuite(i);
        for (int k = 0; k < suite.total_test_count(); ++k)
        {
            const testing::TestInfo& test = *suite.GetTestInfo(k);
            if (!test.should_run())
                continue;
            ++run;
            std::fflush(stdout);
            if (!OrlindexTest::RunTestAsHost(suite.name(), test.name()))
                ++failed;
        }
    }
    std::printf("%d run, %d failed\n", run, failed);
    return run == 0 || failed != 0 ? 1 : 0;
}

} // namespace

int main(int argc, char** argv)
{
    try
    {
        testing::InitGoogleTest(&argc, argv);
        if (testing::GTEST_FLAG(list_tests))
            return RUN_ALL_TESTS();
        return OrlindexTest::IsHostProcess() ? RunAsHost() : RunSelectedTests();
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "the test environment failed: %s\n", error.what());
        return 1;
    }
}
