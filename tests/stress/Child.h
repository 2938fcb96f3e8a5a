#ifndef ORLINDEX_STRESS_CHILD_H
#define ORLINDEX_STRESS_CHILD_H

#include <filesystem>
#include <optional>
#include <string>

#include <windows.h>

namespace OrlindexTest {

// A test that needs a fresh process for each of its many inputs runs itself again: the parent part chooses the inputs,
// the child part tries one and answers. Both see the same installation.

/// What a child process came to.
struct ChildOutcome
{
    bool passed = false; ///< It ended regularly, and its part of the test passed.
    DWORD code = 0;      ///< Exit code.
    std::string answer;  ///< What it gave to AnswerParent.
    std::string output;  ///< All that it printed.
};

/// What this process was started to try; nothing in the parent part.
std::optional<std::string> ChildInput();

/// Runs the current test once more, in a process of its own, to try one input. A child that does not end counts as
/// failed, and is ended. `executable` is another copy of this program, installed elsewhere; by default it is this one.
ChildOutcome RunChild(const std::string& input, const std::filesystem::path& executable = {});

/// The program of this process.
std::filesystem::path OwnExecutable();

/// Of the child part; the last answer counts.
void AnswerParent(const std::string& answer);

} // namespace OrlindexTest

#endif
