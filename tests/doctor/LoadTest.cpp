// Failures of the load itself. Each plugin misbehaves in the tool's separate process and in a real host.

#include "DoctorTest.h"

#include <stdexcept>

#include <windows.h>

#include "base/Handles.h"

namespace OrlindexTest {

using Kestrany::IdentityServices::Handle;
using testing::HasSubstr;

namespace {

/// A process that is suspended and stays, for plugins to duplicate handles into.
class StayingProcess
{
public:
    StayingProcess()
    {
        STARTUPINFOW startup = {};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION started = {};
        std::wstring command = GetCommandLineW();
        wchar_t program[MAX_PATH] = {};
        GetModuleFileNameW(nullptr, program, MAX_PATH);
        if (!CreateProcessW(program, command.data(), nullptr, nullptr, FALSE, CREATE_SUSPENDED, nullptr, nullptr,
                            &startup, &started))
            throw std::runtime_error("cannot start a process");
        process_.reset(started.hProcess);
        thread_.reset(started.hThread); // Never resumed.
        SetEnvironmentVariableW(L"ORLINDEX_TEST_PROCESS", std::to_wstring(started.dwProcessId).c_str());
    }
    StayingProcess(const StayingProcess&) = delete;
    StayingProcess& operator=(const StayingProcess&) = delete;
    ~StayingProcess()
    {
        TerminateProcess(process_.get(), 0);
        WaitForSingleObject(process_.get(), INFINITE);
    }

private:
    Handle process_;
    Handle thread_;
};

} // namespace

class DoctorLoad : public DoctorTest
{
protected:
    void InstallFault(const wchar_t* fault) const
    {
        installation.Install("faulty");
        SetEnvironmentVariableW(L"ORLINDEX_TEST_FAULT", fault);
    }

    void ExpectCutOff() const
    {
        const DoctorReport report = Report({L"--load", L"--timeout", L"600"});
        EXPECT_TRUE(report.Run().inTime);
        EXPECT_EQ(report.Run().exitCode, 57U) << report.Cause();
        EXPECT_LT(report.Run().output.size(), std::size_t{1} << 20);
        EXPECT_EQ(report.FailedStep(), "load");
        EXPECT_THAT(report.Cause(), HasSubstr("than a load has while its factory function is called."));
        EXPECT_EQ(report.Find("load", "call-factory")["result"], "cut-off");
        EXPECT_THAT(report.Find("load", "call-factory")["note"].asString(), HasSubstr("more than 1000 messages or"));
    }

    /// Expects that a null interface is a warning and that a host starts.
    void ExpectWarning(const wchar_t* fault, const std::string& step, const std::string& object) const
    {
        InstallFault(fault);
        const DoctorReport report = ExpectStart();
        EXPECT_EQ(report.Find(step, object)["result"], "null");
        EXPECT_EQ(report.Find(step, object)["mark"], "warning");
        EXPECT_EQ(report.MarkOf(step), "warning");
    }
};

TEST_F(DoctorLoad, TheFaultyBuildWithoutAFaultStarts)
{
    InstallFault(nullptr);
    ExpectStart();
}

TEST_F(DoctorLoad, AMissingDependencyIsReported)
{
    installation.Install("dependent");
    const DoctorReport report = ExpectFailure(ExitCode::LoadFailed, "load", "it needs dependency.dll");
    EXPECT_EQ(report.Find("load", "load-module")["result"], "failed");
    EXPECT_THAT(report.Remedy(), HasSubstr("Put dependency.dll into its folder"));
}

TEST_F(DoctorLoad, ADependencyBesideTheModuleIsFound)
{
    installation.Install("dependent");
    installation.CopyPlugin("dependency", installation.ServerFolder() / "dependency.dll");
    ExpectStart();
}

TEST_F(DoctorLoad, ADependencyBesideTheHostIsFound)
{
    installation.Install("dependent");
    installation.CopyPlugin("dependency", installation.HostFolder() / "dependency.dll");
    ExpectStart();
}

TEST_F(DoctorLoad, AModuleWithoutFactoryFunctionIsReported)
{
    installation.Install("no-factory");
    ExpectFailure(ExitCode::FactorySymbolMissing, "load", "does not export its factory function");
}

TEST_F(DoctorLoad, AModuleWithThe32BitSymbolIsReported)
{
    installation.Install("symbol32");
    const DoctorReport report =
        ExpectFailure(ExitCode::FactorySymbolMissing, "load", "does not export its factory function");
    EXPECT_THAT(report.Find("module-file", "factory function")["note"].asString(), HasSubstr("YAPAVISSOClientFactory"));
}

TEST_F(DoctorLoad, ANullFactoryIsReported)
{
    InstallFault(L"null-factory");
    ExpectFailure(ExitCode::FactoryNull, "load", "answers null");
}

TEST_F(DoctorLoad, AThrowingFactoryIsReported)
{
    InstallFault(L"throw");
    ExpectFailure(ExitCode::PluginThrew, "load", "while its factory function is called: from the factory");
}

TEST_F(DoctorLoad, ACrashingFactoryIsReported)
{
    InstallFault(L"crash");
    ExpectFailure(ExitCode::PluginCrashed, "load", "ended its process while its factory function is called");
}

TEST_F(DoctorLoad, AFactoryThatEndsTheProcessIsReported)
{
    InstallFault(L"exit");
    ExpectFailure(ExitCode::PluginCrashed, "load", "ended its process while its factory function is called");
}

TEST_F(DoctorLoad, AHangingFactoryIsReported)
{
    InstallFault(L"hang");
    ExpectFailure(ExitCode::PluginHung, "load",
                  "did not answer within 10 seconds while its factory function is called");
}

TEST_F(DoctorLoad, APipeGivenToAnotherProcessDoesNotDelayTheEndOfALoad)
{
    const StayingProcess other;
    InstallFault(L"give-pipe-away");
    const DoctorReport report = Report({L"--load"});
    EXPECT_TRUE(report.Run().inTime);
    EXPECT_EQ(report.Run().exitCode, 0U) << report.Run().output;
    EXPECT_EQ(report.Find("interfaces", "ISSOClientModule")["result"], "present") << "nothing is lost";
}

TEST_F(DoctorLoad, APipeGivenToAnotherProcessDoesNotHideACrash)
{
    const StayingProcess other;
    InstallFault(L"give-pipe-away-and-exit");
    const DoctorReport report = Report({L"--load"});
    EXPECT_TRUE(report.Run().inTime);
    EXPECT_EQ(report.Run().exitCode, 54U) << report.Run().output;
}

TEST_F(DoctorLoad, APipeGivenToAnotherProcessDoesNotExtendTheTimeout)
{
    const StayingProcess other;
    InstallFault(L"give-pipe-away-and-hang");
    const DoctorReport report = Report({L"--load", L"--timeout", L"10"});
    EXPECT_TRUE(report.Run().inTime);
    EXPECT_EQ(report.Run().exitCode, 55U) << report.Run().output;
    EXPECT_THAT(report.Cause(), HasSubstr("within 10 seconds while its factory function is called"));
}

TEST_F(DoctorLoad, APluginThatFloodsTheToolWithMessagesIsEnded)
{
    InstallFault(L"flood-messages");
    ExpectCutOff();
}

TEST_F(DoctorLoad, APluginThatFloodsTheToolWithBytesIsEnded)
{
    InstallFault(L"flood-bytes");
    ExpectCutOff();
}

TEST_F(DoctorLoad, WithoutISSOClientModuleAHostDoesNotStart)
{
    InstallFault(L"null-module");
    const DoctorReport report = ExpectFailure(ExitCode::ModuleInterfaceNull, "interfaces", "has no ISSOClientModule");
    EXPECT_EQ(report.Find("interfaces", "ISSOClientModule")["result"], "null");
}

TEST_F(DoctorLoad, WithoutISSOClientAHostStarts)
{
    ExpectWarning(L"null-client", "interfaces", "ISSOClient");
}

TEST_F(DoctorLoad, WithoutISSOClientPrivateAHostStarts)
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

TEST_F(DoctorLoad, OutputOfTheLoadingProcessIsNotInTheReport)
{
    InstallFault(L"null-logger"); // The library then prints its messages.
    EXPECT_EQ(Report({L"--load"}).Run().errors, "");
}

} // namespace OrlindexTest
