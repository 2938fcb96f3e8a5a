// Each platform function that a start-up calls fails once, at each of its calls in turn, in a process of its own.

#include <algorithm>
#include <iterator>
#include <sstream>

#include "LeakCheck.h"
#include "PlatformFunctions.h"
#include "TestScale.h"
#include "orlindex/talix.h"
#include "support/Child.h"
#include "support/HostTest.h"
#include "support/MachineKey.h"
#include "support/Platform.h"

namespace OrlindexTest {

using testing::AnyOf;
using testing::IsEmpty;

namespace {

/// One call of one function that fails in one way.
struct FaultPoint
{
    std::string function;
    std::size_t way;
    int call;
};

std::string ToText(const FaultPoint& point)
{
    return point.function + ' ' + std::to_string(point.way) + ' ' + std::to_string(point.call);
}

FaultPoint ToFaultPoint(const std::string& text)
{
    FaultPoint point;
    std::istringstream(text) >> point.function >> point.way >> point.call;
    return point;
}

/// The calls that read the host's library search directory, whose failure looks as if none were set, and the call that
/// restores it.
bool CostsTheHostsDirectory(const FaultPoint& point)
{
    return point.function == "GetDllDirectoryW" || (point.function == "SetDllDirectoryW" && point.call == 2);
}

/// The calls that release a handle: if one fails, the handle stays open. The second WinVerifyTrust call closes the
/// session.
bool GivesHandlesBack(const FaultPoint& point)
{
    return point.function == "CloseHandle" || point.function == "FreeLibrary" || point.function == "RegCloseKey" ||
           (point.function == "WinVerifyTrust" && point.call == 2);
}

/// The calls that decide whether the module is trusted, or which file it is. All of the functions except one are called
/// for nothing else; that one also closes the WinTrust session, in its second call.
bool LeavesTrustOpen(const FaultPoint& point)
{
    static constexpr const char* functions[] = {"CertGetNameStringA",
                                                "CryptHashCertificate2",
                                                "NtQueryInformationFile",
                                                "NtQueryVirtualMemory",
                                                "PathFileExistsW",
                                                "WTHelperGetProvCertFromChain",
                                                "WTHelperGetProvSignerFromChain",
                                                "WTHelperProvDataFromStateData"};
    return std::find(std::begin(functions), std::end(functions), point.function) != std::end(functions) ||
           (point.function == "WinVerifyTrust" && point.call == 1);
}

constexpr char CleanStart[] = "a start without faults";
constexpr char AfterCleanStart[] = "after a start without faults ";
constexpr char Reached[] = "reached";

std::wstring DllDirectory()
{
    std::wstring directory(MAX_PATH, L'\0');
    directory.resize(GetDllDirectoryW(MAX_PATH, directory.data()));
    return directory;
}

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

} // namespace

class PlatformFaultSweep : public HostTest
{
protected:
    /// Sweeps over the functions that this kind of start-up calls and that `chosen` accepts.
    void Sweep(const std::string& name, const std::function<bool(const std::string&)>& chosen)
    {
        const ChildOutcome start = RunChild(CleanStart);
        ASSERT_TRUE(start.passed) << start.output;
        int functions = 0;
        for (const std::string& function : Lines(start.report))
        {
            EXPECT_TRUE(CannotFail(function) || !FailingResults(function).empty())
                << "the table of platform functions does not say how " << function << " fails";
            if (CannotFail(function) || !chosen(function))
                continue;
            ++functions;
            for (std::size_t way = 0; way < FailingResults(function).size(); ++way)
                SweepCalls(function, way);
            ExpectCleanStart({function, 0, 1});
        }
        EXPECT_GT(points_, 0);
        PrintCount("platform functions failed, " + name, functions);
        PrintCount("platform fault points, " + name, points_);
        PrintCount("platform faults that leave trust open, " + name, trustLeftOpen_);
        PrintCount("clean starts after platform faults, " + name, cleanStarts_);
        PrintCount("platform faults with handles compared, " + name, handlesCompared_);
    }

    /// The child part.
    void Try(const std::string& input)
    {
        SetDllDirectoryW(hostsDirectory_.c_str());
        if (input == CleanStart)
            StartWithoutFaults();
        else if (const std::size_t prefix = std::string_view(AfterCleanStart).size();
                 input.compare(0, prefix, AfterCleanStart) == 0)
            StartWithFaultAfterCleanStart(ToFaultPoint(input.substr(prefix)));
        else
            StartWithFault(ToFaultPoint(input));
    }

    /// Whether every start-up must be refused.
    bool refused = false;

private:
    void SweepCalls(const std::string& function, std::size_t way)
    {
        const int last = ShortOrLong(refused ? 1 : 3, 100000);
        for (int call = 1; call <= last; ++call)
        {
            const std::string point = ToText({function, way, call});
            const ChildOutcome outcome = RunChild(point);
            EXPECT_TRUE(outcome.passed) << "with the fault " << point << ", exit code " << outcome.code << '\n'
                                        << outcome.output;
            if (outcome.passed && outcome.report != Reached)
                return;
            ++points_;
            trustLeftOpen_ += LeavesTrustOpen({function, way, call});
            if (LongForm())
                ExpectCleanStart({function, way, call});
        }
    }

    /// Expects a good start-up in a new process. Then the same fault comes again: the platform has opened its own
    /// handles by now, so that only the fault can leave handles open.
    void ExpectCleanStart(const FaultPoint& point)
    {
        const ChildOutcome outcome = RunChild(AfterCleanStart + ToText(point));
        EXPECT_TRUE(outcome.passed) << "the start after the fault " << ToText(point) << '\n' << outcome.output;
        ++cleanStarts_;
        if (outcome.report == Reached)
            ++handlesCompared_;
    }

    void StartWithoutFaults()
    {
        std::ostringstream called;
        {
            const ImportHooks hooks;
            EXPECT_EQ(talix_init(), refused ? IdClientUnavailable : IdSuccess);
            for (const std::string& function : hooks.Called())
                called << function << '\n';
        }
        ReportToParent(called.str());
        ExpectNothingLeaked();
    }

    void StartWithFault(const FaultPoint& point)
    {
        const bool reached = FaultyStart(point);
        if (reached && LeavesTrustOpen(point))
        {
            EXPECT_FALSE(IsLoaded(installation.PluginFile())) << "a module that is not known to be trusted";
        }
        ReportToParent(reached ? Reached : "");
        ExpectNothingLeaked(CostsTheHostsDirectory(point));
    }

    void StartWithFaultAfterCleanStart(const FaultPoint& point)
    {
        EXPECT_EQ(talix_init(), refused ? IdClientUnavailable : IdSuccess);
        Stop();
        const std::intptr_t handle = MeasureOpenHandles();
        const bool reached = FaultyStart(point);
        Stop();
        if (!GivesHandlesBack(point))
        {
            EXPECT_LE(MeasureOpenHandles(), handle) << "handles were left open";
        }
        ReportToParent(reached ? Reached : "");
    }

    /// Returns whether the fault was reached.
    bool FaultyStart(const FaultPoint& point)
    {
        ImportHooks hooks;
        hooks.Fail({point.function}, point.call, FailingResults(point.function).at(point.way));
        const talix_status_code result = talix_init();
        EXPECT_THAT(hooks.Resources().Held(), AnyOf(IsEmpty(), testing::ElementsAre("LoadLibraryW")))
            << "only the plugin module may stay";
        EXPECT_THAT(result, AnyOf(IdSuccess, IdClientUnavailable));
        if (hooks.Failed() && LeavesTrustOpen(point))
        {
            EXPECT_EQ(result, IdClientUnavailable);
        }
        EXPECT_EQ(result == IdSuccess, IdServicesMgr::IsInitialized());
        return hooks.Failed();
    }

    void ExpectNothingLeaked(bool directoryMayStay = false)
    {
        if (refused)
        {
            EXPECT_FALSE(IdServicesMgr::IsInitialized());
            EXPECT_FALSE(IsLoaded(installation.PluginFile())) << "a refused module is never loaded";
        }
        if (!directoryMayStay)
        {
            EXPECT_EQ(DllDirectory(), hostsDirectory_) << "the host's library search directory";
        }
        ExpectLocksAreFree();
        if (!IdServicesMgr::IsInitialized())
            return;
        EXPECT_EQ(talix_clear_proxy_info(), IdSuccess);
        Stop();
    }

    static void Stop()
    {
        if (!IdServicesMgr::IsInitialized())
            return;
        EXPECT_EQ(talix_deinit(), IdSuccess);
        EXPECT_FALSE(IdServicesMgr::IsInitialized());
    }

    const std::wstring hostsDirectory_ = installation.MakeFolder("hosts-libraries").native();
    int points_ = 0;
    int trustLeftOpen_ = 0;
    int cleanStarts_ = 0;
    int handlesCompared_ = 0; ///< Later start-ups do not reach calls that are made once in a process.
};

/// Several tests share the functions, so that they can run side by side.
class PlatformFaults : public PlatformFaultSweep, public testing::WithParamInterface<int>
{
protected:
    static constexpr int Shares = 4;

    /// A hash of the name assigns each function to a share.
    static bool IsOfThisShare(const std::string& function)
    {
        unsigned sum = 0;
        for (const char character : function)
            sum = sum * 31 + static_cast<unsigned char>(character);
        return static_cast<int>(sum % Shares) == GetParam();
    }
};

TEST_P(PlatformFaults, AGoodStartSucceedsOrReturnsItsCode)
{
    if (const auto input = ChildInput())
        return Try(*input);
    installation.Install();
    Sweep("good start", &IsOfThisShare);
}

TEST_P(PlatformFaults, ARefusedModuleStaysRefused)
{
    refused = true;
    if (const auto input = ChildInput())
        return Try(*input);
    installation.Install("stranger");
    Sweep("refused module", &IsOfThisShare);
}

INSTANTIATE_TEST_SUITE_P(Share, PlatformFaults, testing::Range(0, 4));

class MachinePlatformFaults : public PlatformFaultSweep
{
};

TEST_F(MachinePlatformFaults, AStartFromTheRegistrySucceedsOrReturnsItsCode)
{
    if (const auto input = ChildInput())
        return Try(*input);
    const MachineKey key;
    key.AddVersion(L"1.10.0", installation.ServerFolder().native());
    key.AddVersion(L"1.9.0", installation.HostFolder().native());
    installation.Install();
    installation.WriteClientConfig(R"({"ssoServer": {"searchPaths": "%AppData%\\nothing;%ProgramFiles%"}})");
    Sweep("start from the registry", [](const std::string& function) {
        return function.compare(0, 3, "Reg") == 0 || function.compare(0, 2, "SH") == 0 ||
               function == "WideCharToMultiByte" || function == "MultiByteToWideChar";
    });
}

} // namespace OrlindexTest
