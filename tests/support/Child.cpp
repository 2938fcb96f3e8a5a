#include "Child.h"

#include <filesystem>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include "Handle.h"
#include "HostProcess.h"
#include "Patience.h"
#include "Platform.h"
#include "Text.h"

namespace OrlindexTest {

namespace fs = std::filesystem;

namespace {

constexpr wchar_t InputVariable[] = L"ORLINDEX_TEST_INPUT";

fs::path ReportFile()
{
    return Environment().root / "report";
}

std::wstring CommandLine()
{
    const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
    return L"child --gtest_filter=" + ToWide(test.test_suite_name()) + L'.' + ToWide(test.name());
}

Handle OutputFile(const fs::path& path)
{
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    return Handle(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS, 0, nullptr));
}

PROCESS_INFORMATION Start(const fs::path& executable, HANDLE output)
{
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = output;
    startup.hStdError = output;
    PROCESS_INFORMATION started{};
    if (!StartProcess(executable.native(), CommandLine(), 0, nullptr, startup, started))
        throw std::runtime_error("cannot start a child process: error " + std::to_string(GetLastError()));
    return started;
}

DWORD RunToItsEnd(const fs::path& executable, HANDLE output)
{
    const PROCESS_INFORMATION started = Start(executable, output);
    const Handle process(started.hProcess);
    const Handle thread(started.hThread);
    if (WaitForSingleObject(process.get(), PatienceMilliseconds) != WAIT_OBJECT_0)
    {
        TerminateProcess(process.get(), WAIT_TIMEOUT);
        WaitForSingleObject(process.get(), INFINITE);
    }
    DWORD code = 1;
    GetExitCodeProcess(process.get(), &code);
    return code;
}

} // namespace

void ExpectProcessEnds(DWORD code, const std::function<void()>& call)
{
    if (!ChildInput())
    {
        const ChildOutcome outcome = RunChild("call");
        EXPECT_EQ(outcome.code, code) << outcome.output;
        EXPECT_EQ(outcome.report, "") << "the call returned";
        return;
    }
    // On another thread: on the test's own, GoogleTest handles the platform's exceptions with some compilers.
    std::thread(call).join();
    ReportToParent("returned");
}

fs::path OwnExecutable()
{
    std::wstring path(MAX_PATH, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), MAX_PATH));
    return path;
}

std::optional<std::string> ChildInput()
{
    const DWORD size = GetEnvironmentVariableW(InputVariable, nullptr, 0);
    if (size == 0)
        return std::nullopt;
    std::wstring value(size, L'\0');
    value.resize(GetEnvironmentVariableW(InputVariable, value.data(), size));
    return ToUtf8(value);
}

ChildOutcome RunChild(const std::string& input, const fs::path& executable)
{
    const fs::path outputPath = Environment().root / "child-output";
    fs::remove(ReportFile());
    TakeEndReport();
    SetEnvironmentVariableW(InputVariable, ToWide(input).c_str());
    ChildOutcome outcome;
    outcome.code = RunToItsEnd(executable.empty() ? OwnExecutable() : executable, OutputFile(outputPath).get());
    SetEnvironmentVariableW(InputVariable, nullptr);
    outcome.passed = TakeEndReport() && outcome.code == 0;
    outcome.output = ReadFile(outputPath);
    if (fs::exists(ReportFile()))
        outcome.report = ReadFile(ReportFile());
    return outcome;
}

void ReportToParent(const std::string& report)
{
    WriteFile(ReportFile(), report);
}

} // namespace OrlindexTest
