#include "DoctorTest.h"

#include "base/JsonDocument.h"
#include "support/HostProcess.h"

namespace OrlindexTest {

namespace fs = std::filesystem;
using Kestrany::IdentityServices::ParseJson;
using testing::EndsWith;
using testing::HasSubstr;

DoctorReport::DoctorReport(ProgramRun run) : run_(std::move(run))
{
    const auto root = ParseJson(run_.output);
    EXPECT_TRUE(root) << run_.output << run_.errors;
    root_ = root.value_or(Json::Value(Json::objectValue));
}

const Json::Value& DoctorReport::Step(const std::string& name) const
{
    for (const Json::Value& step : root_["steps"])
        if (step["step"] == name)
            return step;
    return Json::Value::nullSingleton();
}

std::string DoctorReport::MarkOf(const std::string& step) const
{
    return Step(step)["mark"].asString();
}

std::vector<std::string> DoctorReport::Results(const std::string& step) const
{
    std::vector<std::string> results;
    for (const Json::Value& finding : Step(step)["findings"])
        results.push_back(finding["name"].asString() + ": " + finding["result"].asString());
    return results;
}

Json::Value DoctorReport::Find(const std::string& step, const std::string& name) const
{
    for (const Json::Value& finding : Step(step)["findings"])
        if (finding["name"] == name)
            return finding;
    return {};
}

fs::path DoctorTest::BuildFolder()
{
    return Surroundings().plugins.parent_path().parent_path();
}

fs::path DoctorTest::Tool()
{
    return BuildFolder() / "tools" / "orlindex-doctor.exe";
}

ProgramRun DoctorTest::RunTool(std::vector<std::wstring> arguments) const
{
    arguments.insert(arguments.end(), {L"--host", site.HostFolder().native()});
    return RunProgram(Tool(), arguments);
}

DoctorReport DoctorTest::Report(std::vector<std::wstring> arguments) const
{
    arguments.emplace_back(L"--json");
    return DoctorReport(RunTool(std::move(arguments)));
}

bool DoctorTest::RealHostStarts(unsigned seconds) const
{
    const fs::path host = site.HostFolder() / "doctor_test_host.exe";
    fs::copy_file(BuildFolder() / "tests" / "doctor" / "doctor_test_host.exe", host,
                  fs::copy_options::overwrite_existing);
    const ProgramRun run = RunProgram(host, {}, seconds);
    return run.inTime && run.exitCode == 0 && testing::Matches(EndsWith("1000\r\n"))(run.output);
}

DoctorReport DoctorTest::ExpectFailure(ExitCode code, const std::string& step, const std::string& cause) const
{
    const std::string number = std::to_string(static_cast<int>(code));
    DoctorReport report = Report({L"--load", L"--timeout", L"5"});
    EXPECT_EQ(report.Run().exitCode, static_cast<unsigned long>(code)) << report.Run().output;
    EXPECT_EQ(report.Root()["verdict"]["exitCode"], static_cast<int>(code));
    EXPECT_EQ(report.Root()["verdict"]["starts"], false);
    EXPECT_EQ(report.FailedStep(), step);
    EXPECT_THAT(report.Cause(), HasSubstr(cause));
    EXPECT_THAT(report.Cause(), EndsWith("."));
    EXPECT_NE(report.Remedy(), "");

    const ProgramRun text = RunTool({L"--load", L"--timeout", L"5"});
    EXPECT_EQ(text.exitCode, static_cast<unsigned long>(code));
    EXPECT_THAT(text.output, HasSubstr("\nCause:  " + report.Cause() + "\nRemedy: " + report.Remedy() +
                                       "\nStep:   " + step + ", exit code " + number + '\n'));
    EXPECT_FALSE(RealHostStarts(5)) << "the tool and a real host disagree";
    return report;
}

DoctorReport DoctorTest::ExpectStart() const
{
    DoctorReport report = Report({L"--load"});
    EXPECT_EQ(report.Run().exitCode, 0U) << report.Run().output;
    EXPECT_EQ(report.Root()["verdict"]["starts"], true);
    EXPECT_TRUE(report.Root()["verdict"]["step"].isNull());
    EXPECT_TRUE(RealHostStarts()) << "the tool and a real host disagree";
    return report;
}

} // namespace OrlindexTest
