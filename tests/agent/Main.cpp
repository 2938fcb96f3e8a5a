#include <gtest/gtest.h>

#include "Environment.h"
#include "HostRoles.h"
#include "OwnJob.h"

/// Runs the tests, or one of the other hosts that some tests need.
int main(int argc, char** argv)
{
    using namespace Kestrany::Agent;
    if (argc > 1 && std::string(argv[1]) == HostOption)
        return PlayHost({argv + 2, argv + argc});
    JoinOwnJob();
    UseOwnFolder();
    testing::InitGoogleTest(&argc, argv);
    const int result = RUN_ALL_TESTS();
    CleanUp();
    return result;
}
