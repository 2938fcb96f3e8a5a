#ifndef ORLINDEX_DOCTOR_TESTS_PROGRAMRUN_H
#define ORLINDEX_DOCTOR_TESTS_PROGRAMRUN_H

#include <filesystem>
#include <string>
#include <vector>

namespace OrlindexTest {

/// How a program went.
struct ProgramRun
{
    unsigned long exitCode;
    bool inTime;        ///< Or it was ended.
    std::string output; ///< Standard output, as it was written.
    std::string errors;
};

/// Runs a program to its end, or ends it after `seconds`. Arguments must hold no quotation marks and not end with a
/// backslash.
ProgramRun RunProgram(const std::filesystem::path& program, const std::vector<std::wstring>& arguments,
                      unsigned seconds = 300);

} // namespace OrlindexTest

#endif
