#include "HostProcess.h"

#include <cstdio>
#include <optional>
#include <stdexcept>
#include <system_error>

#include <windows.h>

#include "Handle.h"
#include "MachineLock.h"
#include "Patience.h"
#include "Platform.h"
#include "Text.h"

namespace OrlindexTest {

namespace fs = std::filesystem;

namespace {

constexpr wchar_t RootVariable[] = L"ORLINDEX_TEST_ROOT";
constexpr wchar_t PluginsVariable[] = L"ORLINDEX_TEST_PLUGINS";
constexpr wchar_t SigningVariable[] = L"ORLINDEX_TEST_SIGNING";
constexpr wchar_t OtherPluginsVariable[] = L"ORLINDEX_TEST_OTHER_PLUGINS";
constexpr wchar_t LongFormVariable[] = L"ORLINDEX_LONG";
constexpr char EndReport[] = "ended";                 // A file in the test's folder.
constexpr DWORD TimeLimit = 4 * PatienceMilliseconds; // A test takes well under one second, but for some stress tests.
constexpr DWORD LongTimeLimit = 7200000;              // Milliseconds; of the long form of the stress tests.

fs::path Executable()
{
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

std::optional<std::wstring> EnvironmentVariable(const wchar_t* name)
{
    const DWORD size = GetEnvironmentVariableW(name, nullptr, 0);
    if (size == 0)
        return std::nullopt;
    std::wstring value(size, L'\0');
    value.resize(GetEnvironmentVariableW(name, value.data(), size));
    return value;
}

fs::path RequiredVariable(const wchar_t* name)
{
    const auto value = EnvironmentVariable(name);
    if (!value)
        throw std::logic_error("not started as a host: " + ToUtf8(name) + " is missing");
    return *value;
}

/// A folder of this test alone, removed with everything in it.
class TestFolder
{
public:
    TestFolder()
    {
        // A name is taken if a process with the same number left it: it was killed, or made something that cannot be
        // removed.
        static int counter = 0;
        do
            path_ = fs::temp_directory_path() /
                    ("orlindex-" + std::to_string(GetCurrentProcessId()) + '-' + std::to_string(++counter));
        while (!fs::create_directory(path_));
    }

    ~TestFolder()
    {
        std::error_code error;
        fs::remove_all(path_, error);
        if (error)
            std::fprintf(stderr, "cannot remove %s: %s\n", Utf8(path_).c_str(), error.message().c_str());
    }

    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    const fs::path& Path() const { return path_; }

private:
    fs::path path_;
};

/// Ends the processes in it when the object is destroyed.
Handle MakeJob()
{
    Handle job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    if (!job || !SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof limits))
        throw std::runtime_error("cannot make a job object");
    return job;
}

DWORD TimeLimitOfForm()
{
    return EnvironmentVariable(LongFormVariable) == L"1" ? LongTimeLimit : TimeLimit;
}

DWORD RunToItsEnd(const fs::path& executable, const std::string& test, const fs::path& directory)
{
    const std::wstring command =
        L'"' + executable.native() + L"\" --gtest_also_run_disabled_tests --gtest_filter=" + ToWide(test);
    PROCESS_INFORMATION started{};
    const Handle job = MakeJob();
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    if (!StartProcess(executable.native(), command, CREATE_SUSPENDED, directory.c_str(), startup, started))
        throw std::runtime_error("cannot start the host process: error " + std::to_string(GetLastError()));
    const Handle process(started.hProcess);
    const Handle thread(started.hThread);
    AssignProcessToJobObject(job.get(), process.get());
    ResumeThread(thread.get());

    const DWORD limit = TimeLimitOfForm();
    if (WaitForSingleObject(process.get(), limit) != WAIT_OBJECT_0)
    {
        std::printf("[  TIME   ] %s ran longer than %lu ms and was ended\n", test.c_str(), limit);
        TerminateProcess(process.get(), 1);
        WaitForSingleObject(process.get(), INFINITE); // Until then its files cannot be removed.
    }
    DWORD code = 1;
    GetExitCodeProcess(process.get(), &code);
    return code;
}

} // namespace

bool IsHostProcess()
{
    return EnvironmentVariable(RootVariable).has_value();
}

HostEnvironment Environment()
{
    return {RequiredVariable(RootVariable), RequiredVariable(PluginsVariable), RequiredVariable(SigningVariable)};
}

void ReportEnd()
{
    WriteFile(Environment().root / EndReport, {});
}

bool TakeEndReport()
{
    return fs::remove(Environment().root / EndReport);
}

bool RunTestAsHost(const std::string& suite, const std::string& name)
{
    const std::string test = suite + '.' + name;
    const bool changesMachine = suite.compare(0, 7, "Machine") == 0;
    const MachineLock lock(changesMachine ? MachineLock::Exclusive : MachineLock::Shared);

    const fs::path executable = Executable();
    const fs::path build = executable.parent_path().parent_path();
    const TestFolder folder;
    const fs::path host = folder.Path() / "host";
    const fs::path elsewhere = folder.Path() / "current";
    fs::create_directory(host);
    fs::create_directory(elsewhere);
    for (const fs::path& file : {executable, executable.parent_path() / "Orlindex.dll"})
        fs::copy_file(file, host / file.filename());

    SetEnvironmentVariableW(RootVariable, folder.Path().c_str());
    // The plugins of another build, if the run is about two compilers.
    const auto otherPlugins = EnvironmentVariable(OtherPluginsVariable);
    SetEnvironmentVariableW(PluginsVariable,
                            (otherPlugins ? fs::absolute(*otherPlugins) : build / "tests" / "plugins").c_str());
    // Absolute for the host process, whose current directory may be on another drive.
    SetEnvironmentVariableW(SigningVariable, fs::absolute(ORLINDEX_SIGNING_FOLDER).c_str());
    const DWORD code = RunToItsEnd(host / executable.filename(), test, elsewhere);
    if (code != 0)
        std::printf("[  HOST   ] %s: the process ended with code %lu (0x%08lX)\n", test.c_str(), code, code);
    else if (!fs::exists(folder.Path() / EndReport))
        std::printf("[  HOST   ] %s: the process ended before its test did\n", test.c_str());
    else
        return true;
    return false;
}

} // namespace OrlindexTest
