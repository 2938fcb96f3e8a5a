// `check`: one plugin module file against the contract.

#include "DoctorTest.h"

#include <windows.h>

namespace OrlindexTest {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

class DoctorCheck : public DoctorTest
{
protected:
    DoctorReport Check(std::vector<std::wstring> arguments = {}) const
    {
        arguments.insert(arguments.begin(), {L"check", installation.PluginFile().native()});
        return Report(std::move(arguments));
    }
};

TEST_F(DoctorCheck, AGoodModuleKeepsTheContract)
{
    installation.Install();
    const DoctorReport report = Check({L"--load"});
    EXPECT_EQ(report.Run().exitCode, 0U) << report.Run().output;
    EXPECT_EQ(report.Root()["command"], "check");
    EXPECT_EQ(report.Root()["module"], Utf8(installation.PluginFile()));
    EXPECT_THAT(report.Results("module-file"), ElementsAre("plugin module: read", "format: x64-dll",
                                                           "factory function: exported", "version record: missing"));
    EXPECT_EQ(report.Find("compatibility-entries", "offered")["result"], "offered");
    EXPECT_EQ(report.Find("load", "IPluginLoggerSource")["result"], "present");
    EXPECT_THAT(report.Results("interfaces"),
                ElementsAre("ISSOClientModule: present", "ISSOServerManager: present", "ISSOClient: present",
                            "ISSOClientPrivate: present", "obtain-interfaces: done"));
}

TEST_F(DoctorCheck, WithoutLoadNoCodeOfTheModuleRuns)
{
    installation.Install("faulty");
    SetEnvironmentVariableW(L"ORLINDEX_TEST_FAULT", L"crash");
    const DoctorReport report = Check();
    EXPECT_EQ(report.Run().exitCode, 0U);
    EXPECT_EQ(report.MarkOf("load"), "");
    EXPECT_EQ(Check({L"--load"}).Run().exitCode, 54U);
}

TEST_F(DoctorCheck, AnUntrustedModuleIsNotLoaded)
{
    installation.Install("stranger");
    const DoctorReport report = Check({L"--load"});
    EXPECT_EQ(report.Run().exitCode, 42U);
    EXPECT_EQ(report.MarkOf("load"), "");
}

TEST_F(DoctorCheck, AModuleForAnotherMachineIsReported)
{
    installation.Install("unsigned");
    std::string bytes = ReadFile(installation.PluginFile());
    IMAGE_DOS_HEADER dos;
    std::memcpy(&dos, bytes.data(), sizeof dos);
    const WORD machine = IMAGE_FILE_MACHINE_I386;
    std::memcpy(&bytes.at(static_cast<std::size_t>(dos.e_lfanew) + 4), &machine, sizeof machine);
    WriteFile(installation.PluginFile(), bytes);
    EXPECT_EQ(Check().Find("module-file", "format")["result"], "other-machine");
}

TEST_F(DoctorCheck, AMissingFileIsReported)
{
    EXPECT_EQ(Check().Run().exitCode, 30U);
}

TEST_F(DoctorCheck, ATruncatedFileDoesNotCrashTheTool)
{
    installation.Install();
    const std::string bytes = ReadFile(installation.PluginFile());
    for (const std::size_t size : {0U, 1U, 64U, 128U, 300U, 1024U, 4096U, 40000U})
    {
        WriteFile(installation.PluginFile(), bytes.substr(0, size));
        EXPECT_THAT(Check().Run().exitCode, testing::AnyOf(32U, 40U, 41U, 45U)) << size;
    }
}

TEST_F(DoctorCheck, AMissingVersionCompatibilityFileIsAWarning)
{
    installation.Install();
    fs::remove(installation.CompatibilityFile());
    const DoctorReport report = Check();
    EXPECT_EQ(report.Run().exitCode, 0U);
    EXPECT_EQ(report.MarkOf("compatibility-file"), "warning");
}

TEST_F(DoctorCheck, TheVersionCompatibilityFileCanBeNamed)
{
    installation.Install();
    const fs::path other = installation.MakeFolder("other") / "compatibility.json";
    fs::rename(installation.CompatibilityFile(), other);
    EXPECT_EQ(Check({L"--compatibility", other.native()}).Run().exitCode, 0U);
    EXPECT_EQ(Check({L"--compatibility", other.native() + L"x"}).Run().exitCode, 20U);
}

TEST_F(DoctorCheck, TheReasonWhyAModuleIsNotOfferedIsReported)
{
    installation.Install();
    const std::string path = "%SSOServerAppPath%\\PellwickClient.dll";
    const std::string other = "%SSOServerAppPath%\\Other.dll";
    const struct
    {
        std::vector<CompatibilityEntry> entries;
        std::string why;
    } cases[] = {
        {{CompatibilityEntry{other}}, "no entry names it"},
        {{CompatibilityEntry{path, "2", R"({"minVersion": "1.12"})"}}, "does not serve 1.11.13.3 (min 1.12)"},
        {{CompatibilityEntry{path, ""}}, "is ignored: its key \"version\" is blank or missing"},
        {{CompatibilityEntry{path, "2"}, CompatibilityEntry{other, "3"}}, "has a higher version"},
    };
    for (const auto& each : cases)
    {
        installation.WriteCompatibilityFile(each.entries);
        const DoctorReport report = Check();
        EXPECT_EQ(report.Run().exitCode, 25U) << each.why;
        EXPECT_THAT(report.Cause(), HasSubstr(each.why));
    }
}

TEST_F(DoctorCheck, ARelativePathIsRelativeToTheCurrentDirectory)
{
    installation.Install();
    fs::current_path(installation.ServerFolder());
    const DoctorReport report = Report({L"check", L"PellwickClient.dll"});
    EXPECT_EQ(report.Run().exitCode, 0U);
    EXPECT_EQ(report.Root()["module"], Utf8(installation.PluginFile()));
}

TEST_F(DoctorCheck, ARelativeVersionCompatibilityFileIsRelativeToTheCurrentDirectory)
{
    installation.Install();
    const fs::path folder = installation.MakeFolder("other");
    fs::rename(installation.CompatibilityFile(), folder / "compatibility.json");
    fs::current_path(folder);
    const DoctorReport report = Check({L"--compatibility", L"compatibility.json"});
    EXPECT_EQ(report.Run().exitCode, 0U) << report.Run().output;
    EXPECT_EQ(report.Find("compatibility-file", "version compatibility file")["value"],
              Utf8(folder / "compatibility.json"));
}

TEST_F(DoctorCheck, AModuleWithoutExtensionIsRefused)
{
    installation.Install();
    const fs::path file = installation.ServerFolder() / "PellwickClient";
    fs::rename(installation.PluginFile(), file);
    const DoctorReport report = Report({L"check", file.native()});
    EXPECT_EQ(report.Run().exitCode, 31U);
    EXPECT_EQ(report.Remedy(), "Name the module's file with its extension.");
}

} // namespace OrlindexTest
