// What the "faulty" build of the test plugin does when its factory function is called: the variable
// ORLINDEX_TEST_FAULT says it.

#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string>

#include <windows.h>

#include "plugin/Recorder.h"
#include "plugin/TestPluginControl.h"

namespace OrlindexTest {
namespace {

struct Operation
{
    const char* interfaceName;
    int slot;
};

const std::map<std::string, Operation>& NullAnswers()
{
    static const std::map<std::string, Operation> answers = {
        {"null-factory", {FactoryFunction, 0}}, {"null-logger-source", {Factory, 1}},
        {"null-module", {Factory, 2}},          {"null-client", {Factory, 3}},
        {"null-private", {Factory, 4}},         {"null-server-manager", {Factory, 5}},
        {"null-logger", {LoggerSource, 1}},
    };
    return answers;
}

/// A wait that nothing ends.
void Hang()
{
    const HANDLE never = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    WaitForSingleObject(never, INFINITE);
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
    if (fault == "hang")
        Hang();
    const auto answer = NullAnswers().find(fault);
    if (answer != NullAnswers().end())
        Recorder::Instance().SetResult(answer->second.interfaceName, answer->second.slot, 0);
}

const bool prepared = (Recorder::Instance().SetHook(FactoryFunction, 0, &Misbehave, nullptr), true);

} // namespace
} // namespace OrlindexTest
