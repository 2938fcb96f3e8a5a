// A library beside the host that cannot be loaded: then no host starts, whatever else is installed.

#include "DamagedModule.h"
#include "DoctorTest.h"

#include <cstring>

#include <windows.h>

#include "doctor/ModuleFile.h"

namespace OrlindexTest {

namespace fs = std::filesystem;
using Orlindex::Doctor::FindMissingLibraries;
using Orlindex::Doctor::InspectLibraryFile;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

class DoctorLibrary : public DoctorTest
{
protected:
    DoctorLibrary()
    {
        installation.Install();
        fs::copy_file(installation.ClientConfigFile(), host_ / installation.ClientConfigFile().filename());
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

    /// The values of the library step, by name, for the build's own library.
    std::map<std::string, std::string> TrustOfSound() const
    {
        std::map<std::string, std::string> values;
        for (const char* const name : {"pinned root", "accepted signers"})
            values[name] = Report().Find("library", name)["value"].asString();
        return values;
    }

    /// The build's own library with another text in its version record.
    void WriteLibraryWith(const std::string& text, const std::string& other) const
    {
        ASSERT_EQ(text.size(), other.size());
        std::string bytes = ReadFile(installation.HostFolder() / "Orlindex.dll");
        const std::size_t at = bytes.find(Utf16Bytes(text));
        ASSERT_NE(at, std::string::npos);
        WriteFile(Library(), bytes.replace(at, 2 * other.size(), Utf16Bytes(other)));
    }

    static std::string Utf16Bytes(const std::string& ascii)
    {
        std::string bytes;
        for (const char character : ascii)
            bytes += {character, '\0'};
        return bytes;
    }

    /// Only the headers of a library.
    static std::string DllFor32Bits()
    {
        IMAGE_DOS_HEADER dos = {};
        dos.e_magic = IMAGE_DOS_SIGNATURE;
        dos.e_lfanew = sizeof dos;
        IMAGE_NT_HEADERS32 headers = {};
        headers.Signature = IMAGE_NT_SIGNATURE;
        headers.FileHeader.Machine = IMAGE_FILE_MACHINE_I386;
        headers.FileHeader.SizeOfOptionalHeader = sizeof headers.OptionalHeader;
        headers.FileHeader.Characteristics = IMAGE_FILE_DLL | IMAGE_FILE_EXECUTABLE_IMAGE | IMAGE_FILE_32BIT_MACHINE;
        headers.OptionalHeader.Magic = IMAGE_NT_OPTIONAL_HDR32_MAGIC;
        headers.OptionalHeader.NumberOfRvaAndSizes = IMAGE_NUMBEROF_DIRECTORY_ENTRIES;
        return std::string(reinterpret_cast<const char*>(&dos), sizeof dos) +
               std::string(reinterpret_cast<const char*>(&headers), sizeof headers);
    }

    void ExpectOtherTrust(const std::string& name) const
    {
        for (const std::vector<std::wstring>& arguments : {std::vector<std::wstring>{}, {L"--load"}})
        {
            const DoctorReport report = ReportOf(arguments);
            EXPECT_EQ(report.Run().exitCode, 16U) << report.Run().output;
            EXPECT_EQ(report.Root()["verdict"]["result"], "other-library-trust");
            EXPECT_EQ(report.Root()["verdict"]["starts"], false);
            EXPECT_EQ(report.FailedStep(), "library");
            EXPECT_EQ(report.MarkOf("library"), "failed");
            EXPECT_EQ(report.Find("library", name)["result"], "other");
            EXPECT_THAT(report.Cause(), HasSubstr("cannot tell whether that library accepts the signature"));
            EXPECT_EQ(report.MarkOf("load"), "") << "the library might refuse that module";
        }
    }

    fs::path Library() const { return host_ / "Orlindex.dll"; }

    const fs::path host_ = installation.MakeFolder("other host");
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
    std::string bytes = ReadFile(installation.HostFolder() / "Orlindex.dll");
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
    installation.CopyPlugin("dependent", Library());
    ExpectUnusable({L"--load"}, "it needs dependency.dll");
    const DoctorReport report = ReportOf({L"--load"});
    EXPECT_THAT(report.Remedy(), HasSubstr("Put dependency.dll into its folder"));
    EXPECT_EQ(report.Find("load", "host's library")["mark"], "failed");
    EXPECT_EQ(ReportOf({L"check", installation.PluginFile().native(), L"--load"}).Run().exitCode, 0U)
        << "it is not the module's fault";
}

TEST_F(DoctorLibrary, ASoundOneIsSaidToBeOne)
{
    fs::copy_file(installation.HostFolder() / "Orlindex.dll", Library());
    const DoctorReport report = ReportOf({L"--load"});
    EXPECT_EQ(report.Run().exitCode, 0U) << report.Run().output;
    EXPECT_THAT(report.Results("library"),
                ElementsAre("Orlindex.dll: same", "special build: special", "pinned root: same",
                            "accepted signers: same", "format: x64-dll"));
}

TEST_F(DoctorLibrary, ALibraryThatTrustsAnotherRootIsNotDiagnosed)
{
    const std::string digest = TrustOfSound()["pinned root"];
    ASSERT_THAT(digest, SizeIs(64));
    WriteLibraryWith(digest, (digest.front() == '0' ? '1' : '0') + digest.substr(1));
    ExpectOtherTrust("pinned root");
}

TEST_F(DoctorLibrary, ALibraryThatTrustsOtherSignersIsNotDiagnosed)
{
    const std::string signers = TrustOfSound()["accepted signers"];
    EXPECT_EQ(signers, "Kestrany, Inc.;Kestrany Asia Pte");
    WriteLibraryWith(signers, "Kestrany, Inc.;Kestrany Asia Ltd");
    ExpectOtherTrust("accepted signers");
}

TEST_F(DoctorLibrary, TheOrderOfTheSignersDoesNotCount)
{
    WriteLibraryWith("Kestrany, Inc.;Kestrany Asia Pte", "Kestrany Asia Pte;Kestrany, Inc.");
    EXPECT_EQ(ReportOf({}).Run().exitCode, 0U);
    EXPECT_EQ(ReportOf({}).Find("library", "accepted signers")["result"], "same");
}

TEST_F(DoctorLibrary, OtherTrustIsNoExcuseForAModuleThatNobodyTrusts)
{
    WriteLibraryWith("Kestrany, Inc.;Kestrany Asia Pte", "Kestrany, Inc.;Kestrany Asia Ltd");
    installation.CopyPlugin("stranger", installation.PluginFile());
    EXPECT_EQ(ReportOf({L"--load"}).Run().exitCode, 16U) << "its signer may be one that the library accepts";
    installation.CopyPlugin("unsigned", installation.PluginFile());
    EXPECT_EQ(ReportOf({L"--load"}).Run().exitCode, 40U);
}

TEST_F(DoctorLibrary, OneThatDoesNotSayWhomItTrustsIsAWarning)
{
    WriteLibraryWith("PinnedRootSha256", "OtherTextSha256x");
    const DoctorReport report = ReportOf({L"--load"});
    EXPECT_EQ(report.Run().exitCode, 0U) << report.Run().output;
    EXPECT_EQ(report.Find("library", "pinned root")["result"], "not-said");
    EXPECT_EQ(report.Find("library", "pinned root")["mark"], "warning");
    EXPECT_THAT(report.Cause(), HasSubstr("provided that its library trusts the root and the signers of this tool"));
}

TEST_F(DoctorLibrary, OneWhoseVersionResourceIsDamagedHasNoVersionRecord)
{
    const std::string sound = ReadFile(installation.HostFolder() / "Orlindex.dll");
    for (const ResourceDamage damage : {ResourceDamage::Size, ResourceDamage::Address})
    {
        WriteFile(Library(), WithDamage(sound, damage));
        const DoctorReport report = ReportOf({});
        EXPECT_EQ(report.Run().exitCode, 0U) << report.Run().output;
        EXPECT_EQ(report.Find("library", "Orlindex.dll")["result"], "no-record");
        EXPECT_EQ(report.MarkOf("library"), "warning");
    }
}

TEST_F(DoctorLibrary, OneWhoseResourcesClaimToFillTheAddressSpaceIsRead)
{
    WriteFile(Library(), WithDamage(ReadFile(installation.HostFolder() / "Orlindex.dll"), ResourceDamage::SectionSize));
    const DoctorReport report = ReportOf({});
    EXPECT_EQ(report.Run().exitCode, 0U) << report.Run().output;
    EXPECT_EQ(report.Find("library", "Orlindex.dll")["value"], "1.11.13.3");
    EXPECT_EQ(report.Find("library", "pinned root")["result"], "same");
}

TEST_F(DoctorLibrary, OneFor32BitHostsIsOfAnotherKit)
{
    WriteFile(Library(), DllFor32Bits());
    for (const std::vector<std::wstring>& arguments : {std::vector<std::wstring>{}, {L"--load"}})
    {
        const DoctorReport report = ReportOf(arguments);
        EXPECT_EQ(report.Run().exitCode, 15U) << report.Run().output;
        EXPECT_EQ(report.Root()["verdict"]["result"], "other-library-machine");
        EXPECT_EQ(report.FailedStep(), "library");
        EXPECT_THAT(report.Cause(), HasSubstr("is for 32-bit hosts, and this tool answers for 64-bit ones"));
        EXPECT_THAT(report.Remedy(), HasSubstr("of the kit for 32-bit hosts"));
        EXPECT_EQ(report.Find("library", "format")["result"], "other-machine");
        EXPECT_EQ(report.MarkOf("load"), "");
    }
}

TEST_F(DoctorLibrary, AToolFor32BitHostsFindsThatGood)
{
    WriteFile(Library(), DllFor32Bits());
    Orlindex::Doctor::Report report(nullptr);
    report.Begin(Orlindex::Doctor::StepId::Library);
    Orlindex::Doctor::ModuleFacts facts;
    facts.wanted = Orlindex::Doctor::Machine::X86;
    InspectLibraryFile(Library().native(), report, facts);
    InspectLibraryFile((installation.HostFolder() / "Orlindex.dll").native(), report, facts);
    const auto& findings = report.Steps().back().findings;
    ASSERT_EQ(findings.size(), 2U);
    EXPECT_EQ(findings[0].result, "x86-dll");
    EXPECT_EQ(findings[1].result, "other-machine");
    EXPECT_EQ(findings[1].note, "a 32-bit host cannot load it");
}

TEST_F(DoctorLibrary, ALibraryThatOnlyTheToolsFolderHoldsIsAWarning)
{
    installation.Install("dependent");
    const fs::path tool = installation.MakeFolder("tool") / "orlindex-doctor.exe";
    fs::copy_file(Tool(), tool);
    installation.CopyPlugin("dependency", tool.parent_path() / "dependency.dll");
    const auto finding = [&] {
        return DoctorReport(RunProgram(tool, {L"--json", L"--load", L"--host", installation.HostFolder().native()}))
            .Find("load", "library of the module");
    };
    EXPECT_EQ(finding()["value"], "dependency.dll");
    EXPECT_EQ(finding()["result"], "beside-tool");
    EXPECT_EQ(finding()["mark"], "warning");
    installation.CopyPlugin("dependency", installation.HostFolder() / "dependency.dll");
    EXPECT_TRUE(finding().isNull());
}

TEST_F(DoctorLibrary, ANameOfASetOfFunctionsIsNeverMissing)
{
    installation.Install("dependent");
    const std::string bytes = ReadFile(installation.PluginFile());
    const std::string name = "dependency.dll";
    const std::size_t at = bytes.find(name);
    ASSERT_NE(at, std::string::npos);
    EXPECT_THAT(FindMissingLibraries(installation.PluginFile().native(), host_.native()), ElementsAre(name));
    for (const std::string set : {"api-ms-win-x.d", "API-MS-Win-x.d", "EXT-MS-Win-x.d"})
    {
        WriteFile(installation.PluginFile(), std::string(bytes).replace(at, name.size(), set));
        EXPECT_THAT(FindMissingLibraries(installation.PluginFile().native(), host_.native()), IsEmpty()) << set;
    }
}

} // namespace OrlindexTest
