// The library beside the host, where it cannot be loaded: no host starts then, whatever else is in place.

#include "DoctorTest.h"

#include <cstring>

#include <windows.h>

#include "doctor/ModuleFile.h"

namespace OrlindexTest {

namespace fs = std::filesystem;
using Orlindex::Doctor::FindMissingLibraries;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class DoctorLibrary : public DoctorTest
{
protected:
    DoctorLibrary()
    {
        site.Install();
        fs::copy_file(site.ClientConfigFile(), host_ / site.ClientConfigFile().filename());
    }

    DoctorReport ReportOf(std::vector<std::wstring> arguments) const
    {
        arguments.insert(arguments.end(), {L"--json", L"--host", host_.native()});
        return DoctorReport(RunProgram(Tool(), arguments));
    }

    void ExpectUnusable(const std::vector<std::wstring>& arguments, const std::string& why) const
    {
        const DoctorReport report = ReportOf(arguments);
        EXPECT_EQ(report.Run().exitCode, 14U) << report.Run().output;
        EXPECT_EQ(report.Root()["verdict"]["result"], "library-unusable");
        EXPECT_EQ(report.FailedStep(), "library");
        EXPECT_THAT(report.Cause(), HasSubstr(Utf8(Library()) + "\" cannot be loaded: "));
        EXPECT_THAT(report.Cause(), HasSubstr(why));
        EXPECT_NE(report.Remedy(), "");

        const fs::path program = host_ / "doctor_test_host.exe";
        fs::copy_file(BuildFolder() / "tests" / "doctor" / "doctor_test_host.exe", program,
                      fs::copy_options::overwrite_existing);
        EXPECT_THAT(RunProgram(program, {}, 5).output, Not(EndsWith("1000\r\n")))
            << "the tool and a real host disagree";
    }

    fs::path Library() const { return host_ / "Orlindex.dll"; }

    const fs::path host_ = site.MakeFolder("other host");
};

TEST_F(DoctorLibrary, AFileThatIsNoModuleIsNamed)
{
    WriteFile(Library(), "no module");
    ExpectUnusable({}, "it is no Windows DLL");
    ExpectUnusable({L"--load"}, "it is no Windows DLL");
    EXPECT_EQ(ReportOf({}).MarkOf("library"), "failed");
    EXPECT_EQ(ReportOf({}).Find("library", "format")["result"], "no-module");
}

TEST_F(DoctorLibrary, AnEmptyFileIsNamed)
{
    WriteFile(Library(), "");
    ExpectUnusable({}, "it is no Windows DLL");
}

TEST_F(DoctorLibrary, OneForAnotherMachineIsNamed)
{
    std::string bytes = ReadFile(site.HostFolder() / "Orlindex.dll");
    IMAGE_DOS_HEADER dos;
    std::memcpy(&dos, bytes.data(), sizeof dos);
    const WORD machine = IMAGE_FILE_MACHINE_I386;
    std::memcpy(&bytes.at(static_cast<std::size_t>(dos.e_lfanew) + 4), &machine, sizeof machine);
    WriteFile(Library(), bytes);
    ExpectUnusable({}, "not for 64-bit x86 processes");
    ExpectUnusable({L"--load"}, "not for 64-bit x86 processes");
}

TEST_F(DoctorLibrary, OneThatLacksALibraryIsNamedWithIt)
{
    site.CopyPlugin("dependent", Library());
    ExpectUnusable({L"--load"}, "it needs dependency.dll");
    const DoctorReport report = ReportOf({L"--load"});
    EXPECT_THAT(report.Remedy(), HasSubstr("Put dependency.dll into its folder"));
    EXPECT_EQ(report.Find("load", "host's library")["mark"], "failed");
    EXPECT_EQ(ReportOf({L"check", site.PluginFile().native(), L"--load"}).Run().exitCode, 0U)
        << "it is not the module's fault";
}

TEST_F(DoctorLibrary, ASoundOneIsSaidToBeOne)
{
    fs::copy_file(site.HostFolder() / "Orlindex.dll", Library());
    const DoctorReport report = ReportOf({L"--load"});
    EXPECT_EQ(report.Run().exitCode, 0U) << report.Run().output;
    EXPECT_THAT(report.Results("library"), ElementsAre("Orlindex.dll: same", "format: x64-dll"));
}

TEST_F(DoctorLibrary, ALibraryThatOnlyTheToolsFolderHoldsIsAWarning)
{
    site.Install("dependent");
    const fs::path tool = site.MakeFolder("tool") / "orlindex-doctor.exe";
    fs::copy_file(Tool(), tool);
    site.CopyPlugin("dependency", tool.parent_path() / "dependency.dll");
    const auto finding = [&] {
        return DoctorReport(RunProgram(tool, {L"--json", L"--load", L"--host", site.HostFolder().native()}))
            .Find("load", "library of the module");
    };
    EXPECT_EQ(finding()["value"], "dependency.dll");
    EXPECT_EQ(finding()["result"], "beside-tool");
    EXPECT_EQ(finding()["mark"], "warning");
    site.CopyPlugin("dependency", site.HostFolder() / "dependency.dll");
    EXPECT_TRUE(finding().isNull());
}

TEST_F(DoctorLibrary, ANameOfASetOfFunctionsIsNeverMissing)
{
    site.Install("dependent");
    const std::string bytes = ReadFile(site.PluginFile());
    const std::string name = "dependency.dll";
    const std::size_t at = bytes.find(name);
    ASSERT_NE(at, std::string::npos);
    EXPECT_THAT(FindMissingLibraries(site.PluginFile().native(), host_.native()), ElementsAre(name));
    for (const std::string set : {"api-ms-win-x.d", "API-MS-Win-x.d", "EXT-MS-Win-x.d"})
    {
        WriteFile(site.PluginFile(), std::string(bytes).replace(at, name.size(), set));
        EXPECT_THAT(FindMissingLibraries(site.PluginFile().native(), host_.native()), IsEmpty()) << set;
    }
}

} // namespace OrlindexTest
