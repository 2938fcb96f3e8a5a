#include "DoctorTest.h"

#include <regex>

#include <windows.h>

#include "base/JsonDocument.h"
#include "support/HostProcess.h"

namespace OrlindexTest {

namespace fs = std::filesystem;
using Kestrany::IdentityServices::ParseJson;
using testing::EndsWith;
using testing::HasSubstr;

namespace {

bool IsUtf8(const std::string& text)
{
    return text.empty() || MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(),
                                               static_cast<int>(text.size()), nullptr, 0) > 0;
}

std::set<std::string> QuotedWords(const std::string& cell)
{
    static const std::regex word("`([a-z0-9-]+)`");
    std::set<std::string> words;
    for (std::sregex_iterator match(cell.begin(), cell.end(), word), end; match != end; ++match)
        words.insert((*match)[1]);
    return words;
}

} // namespace

std::map<std::string, std::set<std::string>> DocumentedResults()
{
    std::map<std::string, std::set<std::string>> results;
    const std::string page = ReadFile(DOCTOR_PAGE);
    std::istringstream lines(page.substr(page.find("## For programs")));
    for (std::string line; std::getline(lines, line);)
    {
        const std::size_t bar = line.find(" | ");
        if (line.rfind("| `", 0) != 0 || bar == std::string::npos)
            continue;
        for (const std::string& kind : QuotedWords(line.substr(0, bar)))
            if (kind != "kind")
                results[kind] = QuotedWords(line.substr(bar));
    }
    return results;
}

DoctorReport::DoctorReport(ProgramRun run) : run_(std::move(run))
{
    EXPECT_TRUE(IsUtf8(run_.output));
    const auto root = ParseJson(run_.output);
    EXPECT_TRUE(root) << run_.output << run_.errors;
    root_ = root.value_or(Json::Value(Json::objectValue));
    ExpectDocumentedResults();
}

void DoctorReport::ExpectDocumentedResults() const
{
    static const auto documented = DocumentedResults();
    for (const Json::Value& step : root_["steps"])
        for (const Json::Value& finding : step["findings"])
        {
            const std::string result = finding["result"].asString();
            const auto words = documented.find(finding["kind"].asString());
            EXPECT_TRUE(result.empty() || (words != documented.end() && words->second.count(result) == 1))
                << "the page does not have it: " << finding["kind"].asString() << ' ' << result;
        }
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
    return Environment().plugins.parent_path().parent_path();
}

fs::path DoctorTest::Tool()
{
    return BuildFolder() / "tools" / "orlindex-doctor.exe";
}

ProgramRun DoctorTest::RunTool(std::vector<std::wstring> arguments) const
{
    arguments.insert(arguments.end(), {L"--host", installation.HostFolder().native()});
    return RunProgram(Tool(), arguments);
}

DoctorReport DoctorTest::Report(std::vector<std::wstring> arguments) const
{
    arguments.emplace_back(L"--json");
    return DoctorReport(RunTool(std::move(arguments)));
}

bool DoctorTest::RealHostStarts(unsigned seconds) const
{
    const fs::path host = installation.HostFolder() / "doctor_test_host.exe";
    fs::copy_file(BuildFolder() / "tests" / "doctor" / "doctor_test_host.exe", host,
                  fs::copy_options::overwrite_existing);
    const ProgramRun run = RunProgram(host, {}, seconds);
    return run.inTime && run.exitCode == 0 && testing::Matches(EndsWith("1000\r\n"))(run.output);
}

DoctorReport DoctorTest::ExpectFailure(ExitCode code, const std::string& step, const std::string& cause) const
{
    const std::string number = std::to_string(static_cast<int>(code));
    // A program that does not hang has minutes: the machine may be busy.
    const std::wstring seconds = code == ExitCode::PluginHung ? L"10" : L"300";
    DoctorReport report = Report({L"--load", L"--timeout", seconds});
    EXPECT_EQ(report.Run().exitCode, static_cast<unsigned long>(code)) << report.Run().output;
    EXPECT_EQ(report.Root()["verdict"]["exitCode"], static_cast<int>(code));
    EXPECT_EQ(report.Root()["verdict"]["starts"], false);
    EXPECT_EQ(report.FailedStep(), step);
    EXPECT_THAT(report.Cause(), HasSubstr(cause));
    EXPECT_THAT(report.Cause(), EndsWith("."));
    EXPECT_THAT(report.Remedy(), EndsWith("."));
    for (const std::string& sentence : {report.Cause(), report.Remedy()})
        EXPECT_THAT(sentence, testing::Not(HasSubstr(". "))) << "one sentence";

    const ProgramRun text = RunTool({L"--load", L"--timeout", seconds});
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
