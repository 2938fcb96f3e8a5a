#ifndef ORLINDEX_DOCTOR_TESTS_PROGRAMRUN_H
#define ORLINDEX_DOCTOR_TESTS_PROGRAMRUN_H

#include <filesystem>
#include <string>
#include <vector>

namespace OrlindexTest {

/// The result of a program.
struct ProgramRun
{
    unsigned long exitCode;
    bool inTime;        ///< False if it was terminated.
    std::string output; ///< Standard output, unchanged.
    std::string errors;
};

/// Runs a program to its end, or terminates it after `seconds`. Arguments must not contain quotation marks or end with
/// a backslash.
ProgramRun RunProgram(const std::filesystem::path& program, const std::vector<std::wstring>& arguments,
                      unsigned seconds = 300);

} // namespace OrlindexTest

#endif
