#include "DoctorTest.h"

#include <regex>
#include <stdexcept>

#include <windows.h>

#include "base/Handles.h"
#include "base/Json.h"
#include "base/Text.h"
#include "support/HostProcess.h"

namespace OrlindexTest {

namespace fs = std::filesystem;
using Kestrany::IdentityServices::Handle;
using Kestrany::IdentityServices::OwnFile;
using Kestrany::IdentityServices::ParseJson;
using Kestrany::IdentityServices::WidenStrictly;
using testing::EndsWith;
using testing::HasSubstr;

namespace {

std::set<std::string> QuotedText(const std::string& cell)
{
    static const std::regex word("`([a-z0-9-]+)`");
    std::set<std::string> words;
    for (std::sregex_iterator match(cell.begin(), cell.end(), word), end; match != end; ++match)
        words.insert((*match)[1]);
    return words;
}

Handle CreateOutput(const fs::path& file)
{
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    Handle handle = OwnFile(CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inheritable,
                                        CREATE_ALWAYS, 0, nullptr));
    if (!handle)
        throw std::runtime_error("cannot make " + Utf8(file));
    return handle;
}

std::wstring CommandLine(const fs::path& program, const std::vector<std::wstring>& arguments)
{
    std::wstring command = L'"' + program.native() + L'"';
    for (const std::wstring& argument : arguments)
        command += L" \"" + argument + L'"';
    return command;
}

} // namespace

ProgramRun RunProgram(const fs::path& program, const std::vector<std::wstring>& arguments, unsigned seconds)
{
    const fs::path outputFile = Environment().root / "program-output";
    const fs::path errorFile = Environment().root / "program-errors";
    ProgramRun run{};
    {
        const Handle output = CreateOutput(outputFile);
        const Handle errors = CreateOutput(errorFile);
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = output.get();
        startup.hStdError = errors.get();
        PROCESS_INFORMATION started{};
        std::wstring command = CommandLine(program, arguments);
        if (!CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                            &started))
            throw std::runtime_error("cannot start " + Utf8(program) + ": error " + std::to_string(GetLastError()));
        const Handle process(started.hProcess);
        const Handle thread(started.hThread);
        run.inTime = WaitForSingleObject(process.get(), seconds * 1000) == WAIT_OBJECT_0;
        if (!run.inTime)
        {
            TerminateProcess(process.get(), 1);
            WaitForSingleObject(process.get(), INFINITE);
        }
        GetExitCodeProcess(process.get(), &run.exitCode);
    }
    run.output = ReadFile(outputFile);
    run.errors = ReadFile(errorFile);
    return run;
}

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
        for (const std::string& kind : QuotedText(line.substr(0, bar)))
            if (kind != "kind")
                results[kind] = QuotedText(line.substr(bar));
    }
    return results;
}

DoctorReport::DoctorReport(ProgramRun run) : run_(std::move(run))
{
    EXPECT_TRUE(WidenStrictly(run_.output)) << "not valid UTF-8";
    const auto root = ParseJson(run_.output).root;
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
                << "not documented: " << finding["kind"].asString() << ' ' << result;
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
    // A plugin that does not hang has minutes, because the machine may be busy.
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
