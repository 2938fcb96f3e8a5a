// Options, exit codes, the form of the output, and the library beside the host.

#include "DoctorTest.h"

#include <sstream>
#include <windows.h>

#include "base/Json.h"

namespace OrlindexTest {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class DoctorCommandLine : public DoctorTest
{
};

TEST_F(DoctorCommandLine, AUsageErrorIsReportedWithItsOwnExitCode)
{
    const struct
    {
        std::vector<std::wstring> arguments;
        std::string error;
    } cases[] = {
        {{L"--nonsense"}, "unknown option: --nonsense"},
        {{L"--nonsense", L"--help"}, "unknown option: --nonsense"},
        {{L"--nonsense=1"}, "unknown option: --nonsense=1"},
        {{L"--nonsense="}, "unknown option: --nonsense"},
        {{L"--hos", L"C:\\"}, "unknown option: --hos\n"},
        {{L"--Load"}, "unknown option: --Load"},
        {{L"-x"}, "unknown option: -x"},
        {{L"-"}, "unknown option: -\n"},
        {{L"--"}, "unknown option: --\n"},
        {{L"--="}, "unknown option: --"},
        {{L""}, "unexpected argument: ''"},
        {{L"check", L""}, "unexpected argument: ''"},
        {{L"--load=1"}, "--load takes no value"},
        {{L"--load="}, "--load takes no value"},
        {{L"start"}, "unexpected argument: 'start'"},
        {{L"check"}, "check needs a plugin module file"},
        {{L"check", L"a", L"b"}, "unexpected argument: 'b'"},
        {{L"--host"}, "--host needs a folder"},
        {{L"--host="}, "--host needs a folder"},
        {{L"--host", L""}, "--host needs a folder"},
        {{L"--host", L"--load"}, "--host needs a folder"},
        {{L"--host", L"-h"}, "--host needs a folder"},
        {{L"--host", L"--nonsense"}, "--host needs a folder"},
        {{L"check", L"--compatibility"}, "--compatibility needs a file"},
        {{L"--host", L"C:\\no\\such"}, "--host names no folder"},
        {{L"--host", Tool().native()}, "--host names no folder"},
        {{L"--timeout", L"0"}, "--timeout needs a number of seconds"},
        {{L"--timeout", L"99999999999"}, "--timeout needs a number of seconds"},
        {{L"--timeout", L"3x"}, "--timeout needs a number of seconds"},
        {{L"--timeout"}, "--timeout needs a number of seconds"},
        {{L"--compatibility", L"x"}, "--compatibility belongs to check"},
    };
    for (const auto& each : cases)
    {
        const ProgramRun run = RunProgram(Tool(), each.arguments);
        EXPECT_EQ(run.exitCode, 2U) << each.error;
        EXPECT_THAT(run.errors, StartsWith("error: " + each.error));
        EXPECT_EQ(run.output, "");
    }
}

TEST_F(DoctorCommandLine, HelpListsEveryExitCode)
{
    const ProgramRun run = RunProgram(Tool(), {L"--help"});
    EXPECT_EQ(run.exitCode, 0U);
    for (int code = 0; code < 100; ++code)
    {
        if (const auto* const row = Orlindex::Doctor::FindExitCode(static_cast<ExitCode>(code)))
        {
            EXPECT_THAT(run.output, HasSubstr(std::to_string(code) + "  " + row->meaning + '\n'));
        }
    }
}

TEST_F(DoctorCommandLine, HelpIgnoresTheArgumentsAfterIt)
{
    const std::string help = RunProgram(Tool(), {L"--help"}).output;
    const std::vector<std::vector<std::wstring>> calls = {
        {L"-h"}, {L"check", L"--help"}, {L"--help", L"--nonsense"}, {L"--help", L"--host"}};
    for (const auto& arguments : calls)
    {
        const ProgramRun run = RunProgram(Tool(), arguments);
        EXPECT_EQ(run.exitCode, 0U);
        EXPECT_EQ(run.output, help);
        EXPECT_EQ(run.errors, "");
    }
}

TEST_F(DoctorCommandLine, HelpDescribesTheOptionsInOneColumn)
{
    const std::string help = RunProgram(Tool(), {L"--help"}).output;
    for (const char* const line :
         {"\n  --host DIR            examine the machine ", "\n  --load                also load the plugin, ",
          "\n                        without it nothing is loaded ",
          "\n  --timeout SECONDS     how long a load may take (default: 30)\n",
          "\n  --compatibility FILE  for check: ", "\n  --json                one JSON document ",
          "\n  --no-color            plain text; ", "\n  --help, --version\n"})
        EXPECT_THAT(help, HasSubstr(line));
    std::istringstream lines(help);
    for (std::string line; std::getline(lines, line);)
        EXPECT_LT(line.size(), 120U) << line;
}

TEST_F(DoctorCommandLine, ThePageListsExactlyTheExitCodes)
{
    const std::string page = ReadFile(DOCTOR_PAGE);
    const std::string table = page.substr(page.find("## Exit codes"), page.find("## For programs"));
    for (int code = 0; code < 100; ++code)
    {
        const bool named = table.find("\n| " + std::to_string(code) + " | ") != std::string::npos;
        EXPECT_EQ(named, Orlindex::Doctor::FindExitCode(static_cast<ExitCode>(code)) != nullptr) << code;
    }
}

TEST_F(DoctorCommandLine, ThePageListsTheResultsOfTheSchema)
{
    const auto schema = Kestrany::IdentityServices::ParseJson(ReadFile(DOCTOR_SCHEMA)).root;
    ASSERT_TRUE(schema);
    const auto documented = DocumentedResults();
    const Json::Value& finding = (*schema)["$defs"]["finding"];
    const Json::Value& kinds = finding["properties"]["kind"]["enum"];
    EXPECT_EQ(documented.size(), kinds.size());
    for (const Json::Value& kind : kinds)
        EXPECT_EQ(documented.count(kind.asString()), 1U) << kind.asString();
    for (const Json::Value& rule : finding["allOf"])
    {
        const std::string kind = rule["if"]["properties"]["kind"]["const"].asString();
        std::set<std::string> words;
        for (const Json::Value& word : rule["then"]["properties"]["result"]["enum"])
            words.insert(word.asString());
        const auto ofPage = documented.find(kind);
        ASSERT_NE(ofPage, documented.end()) << kind;
        if (kind != "interface") // It shares a row with another kind.
        {
            EXPECT_EQ(ofPage->second, words) << kind;
        }
    }
}

TEST_F(DoctorCommandLine, TheToolHasTheVersionOfTheLibrary)
{
    EXPECT_THAT(RunProgram(Tool(), {L"--version"}).output, StartsWith("orlindex-doctor 1.11.13.3"));
}

TEST_F(DoctorCommandLine, WithoutHostTheToolsOwnFolderIsExamined)
{
    installation.Install();
    const fs::path tool = installation.HostFolder() / "orlindex-doctor.exe";
    fs::copy_file(Tool(), tool);
    const DoctorReport report(RunProgram(tool, {L"--json", L"--load"}));
    EXPECT_EQ(report.Run().exitCode, 0U);
    EXPECT_EQ(report.Root()["host"], Utf8(installation.HostFolder()));
    EXPECT_EQ(report.Root()["load"], true);
}

TEST_F(DoctorCommandLine, AFinalSeparatorOfTheHostsFolderIsIgnored)
{
    installation.Install();
    const DoctorReport report(
        RunProgram(Tool(), {L"--json", L"--load", L"--host", installation.HostFolder().native() + L"\\."}));
    EXPECT_EQ(report.Run().exitCode, 0U) << report.Run().output;
    EXPECT_EQ(report.Root()["host"], Utf8(installation.HostFolder()));
}

TEST_F(DoctorCommandLine, AValueMayFollowAnEqualsSignAndTheLastOneCounts)
{
    installation.Install();
    const DoctorReport report(
        RunProgram(Tool(), {L"--json", L"--host=C:\\no\\such", L"--host=" + installation.HostFolder().native()}));
    EXPECT_EQ(report.Run().exitCode, 0U) << report.Run().errors;
    EXPECT_EQ(report.Root()["host"], Utf8(installation.HostFolder()));
}

TEST_F(DoctorCommandLine, APathKeepsAllItsCharacters)
{
    for (const wchar_t* const name : {L"\xD83D\xDE00", L"a=b", L"\u0416 \u00E9"})
    {
        const fs::path folder = installation.MakeFolder(name);
        const DoctorReport report(RunProgram(Tool(), {L"--json", L"--host", folder.native()}));
        EXPECT_EQ(report.Root()["host"], Utf8(folder)) << report.Run().errors;
    }
}

TEST_F(DoctorCommandLine, TheLibraryBesideTheHostIsReportedWithItsVersion)
{
    installation.Install();
    const Json::Value finding = Report().Find("library", "Orlindex.dll");
    EXPECT_EQ(finding["value"], "1.11.13.3");
    EXPECT_EQ(finding["result"], "same");
    EXPECT_EQ(finding["source"], Utf8(installation.HostFolder() / "Orlindex.dll"));
}

TEST_F(DoctorCommandLine, ALibraryOfAnotherVersionIsAWarning)
{
    installation.Install();
    const DoctorReport mine = Report();
    // The numbers of the version record, 1.11.13.3, as bytes of the file. The last becomes 4.
    const fs::path file = installation.MakeFolder("old") / "Orlindex.dll";
    std::string bytes = ReadFile(installation.HostFolder() / "Orlindex.dll");
    const std::string numbers("\xBD\x04\xEF\xFE\x00\x00\x01\x00\x0B\x00\x01\x00\x03\x00\x0D\x00", 16);
    const std::size_t at = bytes.find(numbers);
    ASSERT_NE(at, std::string::npos);
    bytes[at + 12] = 4;
    WriteFile(file, bytes);
    const DoctorReport report(RunProgram(Tool(), {L"--json", L"--host", file.parent_path().native()}));
    EXPECT_EQ(report.Find("library", "Orlindex.dll")["value"], "1.11.13.4");
    EXPECT_EQ(report.Find("library", "Orlindex.dll")["result"], "other");
    EXPECT_EQ(report.MarkOf("library"), "warning");
}

TEST_F(DoctorCommandLine, AFolderWithoutLibraryIsAWarning)
{
    const fs::path folder = installation.MakeFolder("empty");
    const DoctorReport report(RunProgram(Tool(), {L"--json", L"--host", folder.native()}));
    EXPECT_EQ(report.Find("library", "Orlindex.dll")["result"], "missing");
    EXPECT_EQ(report.MarkOf("library"), "warning");
}

TEST_F(DoctorCommandLine, OutputToAFileContainsNoColorSequences)
{
    installation.Install();
    EXPECT_THAT(RunTool().output, Not(HasSubstr("\x1B")));
    EXPECT_THAT(RunTool({L"--no-color"}).output, Not(HasSubstr("\x1B")));
}

TEST_F(DoctorCommandLine, ControlCharactersOfAFileDoNotReachTheConsole)
{
    installation.Install();
    installation.WriteClientConfig(R"({"ssoServer": {"bundleId": "a\u001B[31m\n\u009Bb", "searchPaths": ")" +
                                   JsonPath(installation.ServerFolder()) + R"("}})");
    EXPECT_THAT(RunTool().output, HasSubstr("a [31m  b"));
    EXPECT_EQ(Report().Find("client-config", "bundleId")["value"], "a\x1B[31m\n\xC2\x9B"
                                                                   "b")
        << "JSON contains it unchanged";
}

} // namespace OrlindexTest
