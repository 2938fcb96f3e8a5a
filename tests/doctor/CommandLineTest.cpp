// Options, exit codes, the form of the output, and the library beside the host.

#include "DoctorTest.h"

#include <windows.h>

#include "base/JsonDocument.h"

namespace OrlindexTest {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class DoctorCommandLine : public DoctorTest
{
};

TEST_F(DoctorCommandLine, AWrongOneSaysWhatIsWrongAndEndsWithACodeOfItsOwn)
{
    const struct
    {
        std::vector<std::wstring> arguments;
        std::string error;
    } cases[] = {
        {{L"--nonsense"}, "unknown option: --nonsense"},
        {{L"start"}, "unexpected argument: 'start'"},
        {{L"check"}, "check needs a plugin module file"},
        {{L"check", L"a", L"b"}, "unexpected argument: 'b'"},
        {{L"--host"}, "--host needs a folder"},
        {{L"--host", L"--load"}, "--host needs a folder"},
        {{L"--host", L"C:\\no\\such"}, "--host names no folder"},
        {{L"--host", Tool().native()}, "--host names no folder"},
        {{L"--timeout", L"0"}, "--timeout needs a number of seconds"},
        {{L"--timeout", L"99999999999"}, "--timeout needs a number of seconds"},
        {{L"--timeout", L"3x"}, "--timeout needs a number of seconds"},
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

TEST_F(DoctorCommandLine, HelpNamesEveryExitCode)
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

TEST_F(DoctorCommandLine, ThePageNamesEveryExitCodeAndNoOther)
{
    const std::string page = ReadFile(DOCTOR_PAGE);
    const std::string table = page.substr(page.find("## Exit codes"), page.find("## For programs"));
    for (int code = 0; code < 100; ++code)
    {
        const bool named = table.find("\n| " + std::to_string(code) + " | ") != std::string::npos;
        EXPECT_EQ(named, Orlindex::Doctor::FindExitCode(static_cast<ExitCode>(code)) != nullptr) << code;
    }
}

TEST_F(DoctorCommandLine, ThePageListsTheWordsOfTheSchema)
{
    const auto schema = Kestrany::IdentityServices::ParseJson(ReadFile(DOCTOR_SCHEMA));
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

TEST_F(DoctorCommandLine, TheVersionIsTheLibrarys)
{
    EXPECT_THAT(RunProgram(Tool(), {L"--version"}).output, StartsWith("orlindex-doctor 1.11.13.3"));
}

TEST_F(DoctorCommandLine, WithoutHostTheToolsOwnFolderCounts)
{
    installation.Install();
    const fs::path tool = installation.HostFolder() / "orlindex-doctor.exe";
    fs::copy_file(Tool(), tool);
    const DoctorReport report(RunProgram(tool, {L"--json", L"--load"}));
    EXPECT_EQ(report.Run().exitCode, 0U);
    EXPECT_EQ(report.Root()["host"], Utf8(installation.HostFolder()));
    EXPECT_EQ(report.Root()["load"], true);
}

TEST_F(DoctorCommandLine, AFinalSeparatorOfTheHostsFolderDoesNotCount)
{
    installation.Install();
    const DoctorReport report(
        RunProgram(Tool(), {L"--json", L"--load", L"--host", installation.HostFolder().native() + L"\\."}));
    EXPECT_EQ(report.Run().exitCode, 0U) << report.Run().output;
    EXPECT_EQ(report.Root()["host"], Utf8(installation.HostFolder()));
}

TEST_F(DoctorCommandLine, TheLibraryBesideTheHostIsShownWithItsVersion)
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
    // The version record's numbers, 1.11.13.3, as they lie in the file; the last becomes 4.
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

TEST_F(DoctorCommandLine, OutputToAFileHoldsNoColour)
{
    installation.Install();
    EXPECT_THAT(RunTool().output, Not(HasSubstr("\x1B")));
    EXPECT_THAT(RunTool({L"--no-color"}).output, Not(HasSubstr("\x1B")));
}

TEST_F(DoctorCommandLine, NothingThatAFileHoldsSteersTheConsole)
{
    installation.Install();
    installation.WriteClientConfig(R"({"ssoServer": {"bundleId": "a\u001B[31m\n\u009Bb", "searchPaths": ")" +
                                   JsonPath(installation.ServerFolder()) + R"("}})");
    EXPECT_THAT(RunTool().output, HasSubstr("a [31m  b"));
    EXPECT_EQ(Report().Find("client-config", "bundleId")["value"], "a\x1B[31m\n\xC2\x9B"
                                                                   "b")
        << "JSON says it as it is";
}

} // namespace OrlindexTest
