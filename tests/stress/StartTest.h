#ifndef ORLINDEX_STRESS_STARTTEST_H
#define ORLINDEX_STRESS_STARTTEST_H

#include <string>

#include "support/HostTest.h"

namespace OrlindexTest {

/// The figures of one start-up, in a process of its own.
struct StartFigures
{
    int result = 0;
    long long milliseconds = 0;
    long long peakKilobytes = 0; ///< Of the process's working set, at its largest.
    std::string output;
};

/// A test whose parent part makes an installation and whose child part starts the library in it.
class StartTest : public HostTest
{
protected:
    /// The parent part. A crash, or a start-up that does not end, fails the test.
    StartFigures StartInChild(const std::string& what, const std::filesystem::path& executable = {});
    /// The child part.
    void StartAndReport();
};

} // namespace OrlindexTest

#endif
