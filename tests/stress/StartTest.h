#ifndef ORLINDEX_STRESS_STARTTEST_H
#define ORLINDEX_STRESS_STARTTEST_H

#include <string>

#include "support/HostTest.h"

namespace OrlindexTest {

/// How one start went, in a process of its own.
struct StartFigures
{
    int result = 0;
    long long milliseconds = 0;
    long long peakKilobytes = 0; ///< Of the process's working set, at its largest.
    std::string output;
};

/// A test whose parent part lays out an installation and whose child part starts from it.
class StartTest : public HostTest
{
protected:
    /// The parent part. A crash, or a start that does not end, fails the test.
    StartFigures StartInChild(const std::string& what, const std::filesystem::path& executable = {});
    /// The child part.
    void StartAndAnswer();
};

} // namespace OrlindexTest

#endif
