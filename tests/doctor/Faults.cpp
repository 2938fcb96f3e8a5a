// What the "faulty" build of the test plugin does when its factory function is called. The environment variable
// ORLINDEX_TEST_FAULT selects it.

#include <cstdint>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string>

#include <windows.h>

#include <shellapi.h>

#include "plugin/Recorder.h"
#include "plugin/TestPluginControl.h"

namespace OrlindexTest {
namespace {

/// The operation that returns null for a fault.
const std::map<std::string, PluginOperation>& NullResults()
{
    static const std::map<std::string, PluginOperation> results = {
        {"null-factory", {FactoryFunction}},
        {"null-logger-source", {Factory::GetLoggerSource}},
        {"null-module", {Factory::GetSSOClientModule}},
        {"null-client", {Factory::GetSSOClient}},
        {"null-private", {Factory::GetSSOClientPrivate}},
        {"null-server-manager", {Factory::GetSSOServerManager}},
        {"null-logger", {LoggerSource::GetLogger}},
    };
    return results;
}

/// Waits for ever.
void Hang()
{
    const HANDLE never = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    WaitForSingleObject(never, INFINITE);
}

/// The pipe that the tool reads; null in a real host. The tool passes it to the process in the command line.
HANDLE ToolPipe()
{
    int count = 0;
    wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    const bool named = count > 2 && std::wstring(arguments[1]) == L"load-in-this-process";
    const auto number = named ? static_cast<std::uintptr_t>(std::wcstoull(arguments[2], nullptr, 10)) : 0;
    LocalFree(static_cast<void*>(arguments));
    return reinterpret_cast<HANDLE>(number);
}

/// Duplicates the pipe's write end into the process that ORLINDEX_TEST_PROCESS selects.
void GivePipeAway()
{
    const char* const id = std::getenv("ORLINDEX_TEST_PROCESS");
    const HANDLE process = OpenProcess(PROCESS_DUP_HANDLE, FALSE, static_cast<DWORD>(std::stoul(id ? id : "0")));
    HANDLE given = nullptr;
    if (!DuplicateHandle(GetCurrentProcess(), ToolPipe(), process, &given, 0, FALSE, DUPLICATE_SAME_ACCESS))
        throw std::runtime_error("the pipe cannot be given away");
    CloseHandle(process);
}

/// Writes as long as somebody reads.
void Flood(const std::string& bytes)
{
    DWORD written = 0;
    while (WriteFile(ToolPipe(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr))
        ;
}

void Misbehave(void* /*context*/, const std::uint64_t* /*arguments*/, int /*count*/)
{
    const char* const value = std::getenv("ORLINDEX_TEST_FAULT");
    const std::string fault = value ? value : "";
    if (fault == "throw")
        throw std::runtime_error("from the factory");
    if (fault == "crash")
        RaiseException(EXCEPTION_ACCESS_VIOLATION, EXCEPTION_NONCONTINUABLE, 0, nullptr);
    if (fault == "exit")
        ExitProcess(0);
    if (fault.rfind("give-pipe-away", 0) == 0)
        GivePipeAway();
    if (fault == "give-pipe-away-and-exit")
        ExitProcess(0);
    if (fault == "flood-messages")
        Flood("1 9 1 0 \n");
    if (fault == "flood-bytes")
        Flood(std::string(4096, 'x'));
    if (fault == "hang" || fault == "give-pipe-away-and-hang")
        Hang();
    const auto result = NullResults().find(fault);
    if (result != NullResults().end())
        Recorder::Instance().SetResult(result->second, 0);
}

const bool prepared = (Recorder::Instance().SetHook(FactoryFunction, &Misbehave, nullptr), true);

} // namespace
} // namespace OrlindexTest
