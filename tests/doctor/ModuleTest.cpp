// Failures of the plugin module's file: its path, its format, its signature, a lock.

#include "DamagedModule.h"
#include "DoctorTest.h"

#include <windows.h>

#include "base/Handles.h"

namespace OrlindexTest {

using Kestrany::IdentityServices::Handle;
using Kestrany::IdentityServices::OwnFile;
using testing::Contains;
using testing::HasSubstr;

class DoctorModule : public DoctorTest
{
protected:
    std::string File() const { return Utf8(installation.PluginFile()); }

    DoctorReport ExpectSignatureFailure(const std::string& plugin, ExitCode code, const std::string& cause) const
    {
        installation.Install(plugin);
        DoctorReport report = ExpectFailure(code, "signature", cause);
        EXPECT_THAT(report.Cause(), HasSubstr(File()));
        EXPECT_THAT(report.Remedy(), HasSubstr(File()));
        EXPECT_EQ(report.MarkOf("signature"), "failed");
        EXPECT_EQ(report.MarkOf("load"), "") << "an untrusted module is not loaded";
        return report;
    }

    void ExpectRefusedPath(const std::string& path, const std::string& words) const
    {
        installation.Install();
        installation.WriteCompatibilityFile({CompatibilityEntry{path}});
        const DoctorReport report = ExpectFailure(ExitCode::ModulePathRefused, "module-file", words);
        EXPECT_THAT(report.Remedy(), HasSubstr(Utf8(installation.CompatibilityFile())));
    }
};

TEST_F(DoctorModule, AMissingModuleIsReported)
{
    installation.InstallWithoutPlugin();
    const DoctorReport report = ExpectFailure(ExitCode::ModuleMissing, "module-file", File());
    EXPECT_THAT(report.Results("module-file"), Contains("plugin module: missing"));
}

TEST_F(DoctorModule, AFolderInPlaceOfTheModuleIsReported)
{
    installation.InstallWithoutPlugin();
    installation.MakeFolder("server/PellwickClient.dll");
    ExpectFailure(ExitCode::ModuleFormat, "module-file", "cannot be read");
}

TEST_F(DoctorModule, ARelativePathIsAWarning)
{
    installation.Install();
    installation.WriteCompatibilityFile({CompatibilityEntry{"..\\server\\PellwickClient.dll"}});
    const DoctorReport report = ExpectStart();
    EXPECT_EQ(report.MarkOf("module-file"), "warning");
    EXPECT_EQ(report.Find("module-file", "path")["value"], "..\\server\\PellwickClient.dll");
    EXPECT_EQ(report.Find("module-file", "path")["result"], "relative");
}

TEST_F(DoctorModule, APathWithoutExtensionIsRefused)
{
    ExpectRefusedPath("%SSOServerAppPath%\\PellwickClient", "no extension");
}

TEST_F(DoctorModule, APathThatEndsWithAPointIsRefused)
{
    ExpectRefusedPath("%SSOServerAppPath%\\PellwickClient.dll.", "ends with a point or a space");
}

TEST_F(DoctorModule, AFileThatIsNotAModuleIsReported)
{
    installation.InstallWithoutPlugin();
    WriteFile(installation.PluginFile(), "no module");
    ExpectFailure(ExitCode::ModuleFormat, "module-file", "no Windows module");
}

TEST_F(DoctorModule, AnEmptyFileIsNotAModule)
{
    installation.InstallWithoutPlugin();
    WriteFile(installation.PluginFile(), "");
    ExpectFailure(ExitCode::ModuleFormat, "module-file", "no Windows module");
}

TEST_F(DoctorModule, AnUnsignedModuleIsReported)
{
    ExpectSignatureFailure("unsigned", ExitCode::SignatureMissing, "is not signed");
}

TEST_F(DoctorModule, AChangedModuleIsReported)
{
    installation.Install();
    Tamper(installation.PluginFile());
    ExpectFailure(ExitCode::FileChanged, "signature", "was changed after it was signed");
}

TEST_F(DoctorModule, AModuleWithADamagedVersionResourceIsRead)
{
    installation.Install();
    const std::string good =
        ReadFile(installation.HostFolder() / "Orlindex.dll"); // It has a version resource and no signature.
    for (const ResourceDamage damage : {ResourceDamage::Size, ResourceDamage::Address, ResourceDamage::SectionSize})
    {
        WriteFile(installation.PluginFile(), WithDamage(good, damage));
        for (const std::vector<std::wstring>& arguments :
             {std::vector<std::wstring>{}, {L"check", installation.PluginFile().native()}})
        {
            const DoctorReport report = Report(arguments);
            EXPECT_EQ(report.Run().exitCode, 40U) << report.Run().output;
            EXPECT_EQ(report.Find("module-file", "version record")["result"],
                      damage == ResourceDamage::SectionSize ? "read" : "missing");
        }
    }
}

TEST_F(DoctorModule, AnotherSignerIsReportedByName)
{
    const DoctorReport report = ExpectSignatureFailure("stranger", ExitCode::SignerNotAccepted, "\"Somebody Else\"");
    EXPECT_EQ(report.Find("signature", "signer")["result"], "not-accepted");
    EXPECT_EQ(report.Find("signature", "root")["result"], "pinned");
}

TEST_F(DoctorModule, AnAcceptedNameInAnotherCaseIsNotAccepted)
{
    ExpectSignatureFailure("wrong-case", ExitCode::SignerNotAccepted, "\"KESTRANY, INC.\"");
}

TEST_F(DoctorModule, AnotherRootIsReported)
{
    const DoctorReport report =
        ExpectSignatureFailure("other-root", ExitCode::RootNotTrusted, "neither is the pinned one");
    EXPECT_EQ(report.Find("signature", "root")["result"], "unknown");
    EXPECT_EQ(report.Find("signature", "root")["value"], "CN=Orlindex Unknown Root");
    EXPECT_EQ(report.Find("signature", "signer")["result"], "accepted");
}

TEST_F(DoctorModule, AnExpiredCertificateBelowThePinnedRootIsAWarning)
{
    installation.Install("pinned-expired");
    const DoctorReport report = ExpectStart();
    EXPECT_EQ(report.MarkOf("signature"), "warning");
    const Json::Value fault = report.Find("signature", "chain");
    EXPECT_EQ(fault["mark"], "warning");
    EXPECT_EQ(fault["value"], "CERT_TRUST_IS_NOT_TIME_VALID");
    EXPECT_THAT(fault["note"].asString(), HasSubstr("is not valid at this time; the library does not check this"));
}

TEST_F(DoctorModule, AGoodSignatureIsReportedWithSignerChainAndRoot)
{
    installation.Install();
    const DoctorReport report = Report();
    EXPECT_EQ(report.Run().exitCode, 0U);
    EXPECT_EQ(report.Find("signature", "signer")["value"], "Kestrany, Inc.");
    EXPECT_EQ(report.Find("signature", "signer's certificate")["value"], "CN=\"Kestrany, Inc.\"");
    EXPECT_EQ(report.Find("signature", "root")["value"], "CN=Orlindex Development Root");
    EXPECT_EQ(report.Find("signature", "root")["result"], "pinned");
    EXPECT_THAT(report.Find("signature", "root")["note"].asString(), HasSubstr("SHA-256 "));
    EXPECT_EQ(report.Find("signature", "signature")["result"], "valid");
}

TEST_F(DoctorModule, AFileThatIsOpenForWritingIsInUse)
{
    installation.Install();
    const Handle writer = OwnFile(CreateFileW(installation.PluginFile().c_str(), GENERIC_WRITE,
                                              FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(writer);
    ExpectFailure(ExitCode::FileInUse, "signature", "cannot be kept from changing");
}

TEST_F(DoctorModule, WithoutLoadAMissingFactoryFunctionIsReported)
{
    for (const char* const plugin : {"no-factory", "symbol32"})
    {
        installation.Install(plugin);
        const DoctorReport report = Report();
        EXPECT_EQ(report.Run().exitCode, 34U) << plugin;
        EXPECT_EQ(report.FailedStep(), "module-file");
        EXPECT_EQ(report.Find("module-file", "factory function")["result"], "missing");
        EXPECT_EQ(report.MarkOf("load"), "");
    }
}

TEST_F(DoctorModule, WithoutLoadNoCodeOfThePluginRuns)
{
    installation.Install("faulty");
    SetEnvironmentVariableW(L"ORLINDEX_TEST_FAULT", L"crash");
    EXPECT_EQ(Report().Run().exitCode, 0U);
}

} // namespace OrlindexTest
