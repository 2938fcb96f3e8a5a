#include "ProgramRun.h"

#include <stdexcept>

#include <windows.h>

#include "support/Handle.h"
#include "support/HostProcess.h"
#include "support/Text.h"

namespace OrlindexTest {

namespace fs = std::filesystem;

namespace {

Handle CreateOutput(const fs::path& file)
{
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    Handle handle(CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inheritable,
                              CREATE_ALWAYS, 0, nullptr));
    if (handle.get() == INVALID_HANDLE_VALUE)
        throw std::runtime_error("cannot make " + Utf8(file));
    return handle;
}

std::wstring CommandLine(const fs::path& program, const std::vector<std::wstring>& arguments)
{
    std::wstring command = L'"' + program.native() + L'"';
    for (const std::wstring& argument : arguments)
        command += L" \"" + argument + L'"';
    return command;
}

} // namespace

ProgramRun RunProgram(const fs::path& program, const std::vector<std::wstring>& arguments, unsigned seconds)
{
    const fs::path outputFile = Environment().root / "program-output";
    const fs::path errorFile = Environment().root / "program-errors";
    ProgramRun run{};
    {
        const Handle output = CreateOutput(outputFile);
        const Handle errors = CreateOutput(errorFile);
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = output.get();
        startup.hStdError = errors.get();
        PROCESS_INFORMATION started{};
        std::wstring command = CommandLine(program, arguments);
        if (!CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                            &started))
            throw std::runtime_error("cannot start " + Utf8(program) + ": error " + std::to_string(GetLastError()));
        const Handle process(started.hProcess);
        const Handle thread(started.hThread);
        run.inTime = WaitForSingleObject(process.get(), seconds * 1000) == WAIT_OBJECT_0;
        if (!run.inTime)
        {
            TerminateProcess(process.get(), 1);
            WaitForSingleObject(process.get(), INFINITE);
        }
        GetExitCodeProcess(process.get(), &run.exitCode);
    }
    run.output = ReadFile(outputFile);
    run.errors = ReadFile(errorFile);
    return run;
}

} // namespace OrlindexTest
