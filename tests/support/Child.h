#ifndef ORLINDEX_SUPPORT_CHILD_H
#define ORLINDEX_SUPPORT_CHILD_H

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include <windows.h>

namespace OrlindexTest {

// A test that needs a new process for each of its inputs runs itself again: the parent part chooses the inputs, and the
// child part tries one and reports. Both use the same installation.

/// The result of a child process.
struct ChildOutcome
{
    bool passed = false; ///< It ended regularly and its part of the test passed.
    DWORD code = 0;      ///< Exit code.
    std::string report;  ///< What it passed to ReportToParent.
    std::string output;  ///< Everything that it printed.
};

/// The input that this process tries; nullopt in the parent part.
std::optional<std::string> ChildInput();

/// Runs the current test again in a child process, to try one input. A child that does not end in time is terminated
/// and has failed. `executable` is a copy of this program that is installed elsewhere; by default it is this program.
ChildOutcome RunChild(const std::string& input, const std::filesystem::path& executable = {});

/// Expects that `call` ends its process with this exit code. Runs it in a child process; a test has nothing else.
void ExpectProcessEnds(DWORD code, const std::function<void()>& call);

/// The path of this program.
std::filesystem::path OwnExecutable();

/// For the child part. The last report counts.
void ReportToParent(const std::string& report);

} // namespace OrlindexTest

#endif
