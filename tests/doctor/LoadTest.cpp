// Failures of the load itself: each plugin really misbehaves, in the tool's own process for it and in a real host.

#include "DoctorTest.h"

#include <windows.h>

namespace OrlindexTest {

namespace fs = std::filesystem;
using testing::HasSubstr;

class DoctorLoad : public DoctorTest
{
protected:
    void InstallFault(const wchar_t* fault) const
    {
        site.Install("faulty");
        SetEnvironmentVariableW(L"ORLINDEX_TEST_FAULT", fault);
    }

    /// A null that the library goes on with.
    void ExpectWarning(const wchar_t* fault, const std::string& step, const std::string& object) const
    {
        InstallFault(fault);
        const DoctorReport report = ExpectStart();
        EXPECT_EQ(report.Find(step, object)["result"], "null");
        EXPECT_EQ(report.Find(step, object)["mark"], "warning");
        EXPECT_EQ(report.MarkOf(step), "warning");
    }
};

TEST_F(DoctorLoad, AFaultyBuildWithoutFaultStarts)
{
    InstallFault(nullptr);
    ExpectStart();
}

TEST_F(DoctorLoad, AMissingDependencyIsNamed)
{
    site.Install("dependent");
    const DoctorReport report = ExpectFailure(ExitCode::LoadFailed, "load", "it needs dependency.dll");
    EXPECT_EQ(report.Find("load", "load-module")["result"], "failed");
    EXPECT_THAT(report.Remedy(), HasSubstr("Put dependency.dll into its folder"));
}

TEST_F(DoctorLoad, ADependencyBesideTheModuleIsFound)
{
    site.Install("dependent");
    site.CopyPlugin("dependency", site.ServerFolder() / "dependency.dll");
    ExpectStart();
}

TEST_F(DoctorLoad, ADependencyBesideTheHostIsFoundAsInARealHost)
{
    site.Install("dependent");
    site.CopyPlugin("dependency", site.HostFolder() / "dependency.dll");
    ExpectStart();
}

TEST_F(DoctorLoad, AModuleWithoutFactoryFunctionIsNamed)
{
    site.Install("no-factory");
    ExpectFailure(ExitCode::FactorySymbolMissing, "load", "does not export its factory function");
}

TEST_F(DoctorLoad, AModuleWithThe32BitSymbolIsNamed)
{
    site.Install("symbol32");
    const DoctorReport report =
        ExpectFailure(ExitCode::FactorySymbolMissing, "load", "does not export its factory function");
    EXPECT_THAT(report.Find("module-file", "factory function")["note"].asString(), HasSubstr("YAPAVISSOClientFactory"));
}

TEST_F(DoctorLoad, AFactoryThatIsNullIsNamed)
{
    InstallFault(L"null-factory");
    ExpectFailure(ExitCode::FactoryNull, "load", "answers null");
}

TEST_F(DoctorLoad, AThrowingFactoryIsNamed)
{
    InstallFault(L"throw");
    ExpectFailure(ExitCode::PluginThrew, "load", "while its factory function is called: from the factory");
}

TEST_F(DoctorLoad, ACrashingFactoryIsNamed)
{
    InstallFault(L"crash");
    ExpectFailure(ExitCode::PluginCrashed, "load", "ended its process while its factory function is called");
}

TEST_F(DoctorLoad, AFactoryThatEndsTheProcessIsNamed)
{
    InstallFault(L"exit");
    ExpectFailure(ExitCode::PluginCrashed, "load", "ended its process while its factory function is called");
}

TEST_F(DoctorLoad, AHangingFactoryIsNamed)
{
    InstallFault(L"hang");
    ExpectFailure(ExitCode::PluginHung, "load", "did not answer within 5 seconds while its factory function is called");
}

TEST_F(DoctorLoad, WithoutModuleInterfaceAHostDoesNotStart)
{
    InstallFault(L"null-module");
    const DoctorReport report = ExpectFailure(ExitCode::ModuleInterfaceNull, "interfaces", "has no ISSOClientModule");
    EXPECT_EQ(report.Find("interfaces", "ISSOClientModule")["result"], "null");
}

TEST_F(DoctorLoad, WithoutClientInterfaceAHostStarts)
{
    ExpectWarning(L"null-client", "interfaces", "ISSOClient");
}

TEST_F(DoctorLoad, WithoutPrivateInterfaceAHostStarts)
{
    ExpectWarning(L"null-private", "interfaces", "ISSOClientPrivate");
}

TEST_F(DoctorLoad, WithoutServerManagerAHostStarts)
{
    ExpectWarning(L"null-server-manager", "interfaces", "ISSOServerManager");
}

TEST_F(DoctorLoad, WithoutLoggerSourceAHostStarts)
{
    ExpectWarning(L"null-logger-source", "load", "IPluginLoggerSource");
}

TEST_F(DoctorLoad, WithoutLoggerAHostStarts)
{
    ExpectWarning(L"null-logger", "load", "IPluginLogger");
}

TEST_F(DoctorLoad, NothingThatThePluginPrintsGetsIntoTheReport)
{
    InstallFault(L"null-logger"); // Then the library prints its messages.
    EXPECT_EQ(Report({L"--load"}).Run().errors, "");
}

} // namespace OrlindexTest
