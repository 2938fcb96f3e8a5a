#ifndef ORLINDEX_DOCTOR_TESTS_DOCTORTEST_H
#define ORLINDEX_DOCTOR_TESTS_DOCTORTEST_H

#include <filesystem>
#include <json/value.h>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "doctor/ExitCode.h"
#include "support/Installation.h"
#include "support/Text.h"

namespace OrlindexTest {

using Orlindex::Doctor::ExitCode;

/// The result of running a program.
struct ProgramRun
{
    unsigned long exitCode;
    bool inTime;        ///< False if the program was ended at the time-out.
    std::string output; ///< Standard output, as it was written.
    std::string errors;
};

/// Runs a program to its end, or ends it after `seconds`. Arguments must not contain quotation marks or end with a
/// backslash.
ProgramRun RunProgram(const std::filesystem::path& program, const std::vector<std::wstring>& arguments,
                      unsigned seconds = 300);

/// The values of `result`, by the kind of finding, as docs/doctor.md lists them.
std::map<std::string, std::set<std::string>> DocumentedResults();

/// The tool's JSON report. The constructor expects that it is valid UTF-8, and that its results are documented.
class DoctorReport
{
public:
    explicit DoctorReport(ProgramRun run);

    const ProgramRun& Run() const { return run_; }
    const Json::Value& Root() const { return root_; }
    std::string Cause() const { return root_["verdict"]["cause"].asString(); }
    std::string Remedy() const { return root_["verdict"]["remedy"].asString(); }
    std::string FailedStep() const { return root_["verdict"]["step"].asString(); }

    /// The mark of a step, such as "ok" or "failed"; empty if the report has no such step.
    std::string MarkOf(const std::string& step) const;
    /// "<name>: <result>" of each finding of a step, in order.
    std::vector<std::string> Results(const std::string& step) const;
    /// The first finding of a step with that name; null if there is none.
    Json::Value Find(const std::string& step, const std::string& name) const;

private:
    void ExpectDocumentedResults() const;
    const Json::Value& Step(const std::string& name) const;

    ProgramRun run_;
    Json::Value root_;
};

/// Runs the tool as a user does, on the test's installation.
class DoctorTest : public testing::Test
{
protected:
    static std::filesystem::path BuildFolder();
    static std::filesystem::path Tool();

    /// Adds --host with the test's host folder.
    ProgramRun RunTool(std::vector<std::wstring> arguments = {}) const;
    DoctorReport Report(std::vector<std::wstring> arguments = {}) const;

    /// Whether talix_init succeeds in a real host in the same folder.
    bool RealHostStarts(unsigned seconds = 300) const;

    /// Expects that the tool, with --load, reports this failure as text and as JSON, and that a real host does not
    /// start either. Returns the report.
    DoctorReport ExpectFailure(ExitCode code, const std::string& step, const std::string& cause) const;
    /// Expects that the tool, with --load, reports that a host starts, and that a real one does. Returns the report.
    DoctorReport ExpectStart() const;

    const Installation installation;
};

} // namespace OrlindexTest

#endif
