#ifndef ORLINDEX_DOCTOR_TESTS_DOCTORTEST_H
#define ORLINDEX_DOCTOR_TESTS_DOCTORTEST_H

#include <json/value.h>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ProgramRun.h"
#include "doctor/ExitCode.h"
#include "support/Installation.h"
#include "support/Text.h"

namespace OrlindexTest {

using Orlindex::Doctor::ExitCode;

/// The result words of each kind of finding, as the tool's page lists them.
std::map<std::string, std::set<std::string>> DocumentedResults();

/// The tool's JSON report. Expects that it is UTF-8 and that its result words are documented.
class DoctorReport
{
public:
    explicit DoctorReport(ProgramRun run);

    const ProgramRun& Run() const { return run_; }
    const Json::Value& Root() const { return root_; }
    std::string Cause() const { return root_["verdict"]["cause"].asString(); }
    std::string Remedy() const { return root_["verdict"]["remedy"].asString(); }
    std::string FailedStep() const { return root_["verdict"]["step"].asString(); }

    /// "good", "failed", ... of a step; empty if the report has no such step.
    std::string MarkOf(const std::string& step) const;
    /// "<name>: <result>" of a step's findings, in order.
    std::vector<std::string> Results(const std::string& step) const;
    /// The first finding of a step with that name; null if there is none.
    Json::Value Find(const std::string& step, const std::string& name) const;

private:
    void ExpectDocumentedResults() const;
    const Json::Value& Step(const std::string& name) const;

    ProgramRun run_;
    Json::Value root_;
};

/// The tool, run as a user would run it, for the installation of the test.
class DoctorTest : public testing::Test
{
protected:
    static std::filesystem::path BuildFolder();
    static std::filesystem::path Tool();

    /// With --host and the test's host folder.
    ProgramRun RunTool(std::vector<std::wstring> arguments = {}) const;
    DoctorReport Report(std::vector<std::wstring> arguments = {}) const;

    /// Whether the library starts in a real host in the same folder.
    bool RealHostStarts(unsigned seconds = 300) const;

    /// Expects that the tool, with --load, reports this failure, in both forms of its report, and that a real host does
    /// not start either. Returns the report.
    DoctorReport ExpectFailure(ExitCode code, const std::string& step, const std::string& cause) const;
    /// Expects that the tool, with --load, reports that a host starts, and that a real host does. Returns the report.
    DoctorReport ExpectStart() const;

    const Installation installation;
};

} // namespace OrlindexTest

#endif
