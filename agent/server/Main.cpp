// The server application of the sign-in agent. It keeps the logins that the hosts of one user share.

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <utility>

#include "platform/AtomicFile.h"
#include "platform/Base.h"
#include "platform/Folders.h"
#include "platform/LogFile.h"
#include "server/ChooseSource.h"
#include "server/HostRegistry.h"
#include "server/ServerApplication.h"
#include "server/ServerInstance.h"
#include "server/ServerOptions.h"
#include "server/ServerProcesses.h"

using namespace Kestrany;
using namespace Kestrany::Agent;

namespace {

std::string HelpText()
{
    return "Pellwick.exe " AGENT_VERSION ": the server application of the sign-in agent.\n"
           "\n"
           "Usage: Pellwick.exe [--identity NAME] [--quit-after SECONDS] [--idle-after SECONDS]\n"
           "       Pellwick.exe --quit [--identity NAME]\n"
           "       Pellwick.exe --check-scenario FILE\n"
           "       Pellwick.exe --help | --version\n"
           "\n" +
           DescribeServerOptions() +
           "\n"
           "Hosts start it when they need it. It keeps who is signed in, for all hosts of the user.\n"
           "It signs them in with the OpenID Connect provider that Pellwick.config.json beside it names.\n"
           "Without that file users are simulated: it plays the scenario in the file that the environment\n"
           "variable PELLWICK_SCENARIO names, else in Pellwick.scenario.json beside it, else its own:\n"
           "every login succeeds.\n"
           "The variable PELLWICK_SIMULATOR_DATA names another folder for what it keeps.\n"
           "\n"
           "Exit codes: 0 it quit as asked, or the scenario is valid, 1 the system refused something,\n"
           "            2 wrong arguments, 3 another process runs under the same name, 4 the scenario\n"
           "            is not valid.\n";
}

int Fail(const LogFile& log, ServerExitCode code, const std::string& message)
{
    log.Write("Pellwick", TALIXLog::Error, message);
    std::fprintf(stderr, "Pellwick.exe: %s\n", message.c_str());
    return code;
}

int CheckScenarioFile(const std::string& file)
{
    const std::string problem = CheckScenario(WidenStrictly(file).value_or(std::wstring()));
    if (problem.empty())
    {
        std::printf("%s: valid\n", file.c_str());
        return ServerQuit;
    }
    std::fprintf(stderr, "%s\n", problem.c_str());
    return ServerScenarioInvalid;
}

int QuitOther(const LogFile& log, const std::string& identity)
{
    constexpr std::int64_t limit = 10'000;
    const ServerProcesses processes([&](TALIXLog::LogLevel level, const std::string& message) {
        log.Write("Pellwick", level, message);
        std::puts(message.c_str());
    });
    return processes.Quit(identity, limit) ? ServerQuit : ServerFailed;
}

ServerParts MakeServerParts(const LogSink& sink)
{
    ServerParts parts;
    parts.ticks = [] { return static_cast<std::int64_t>(GetTickCount64()); };
    parts.warn = [sink](const std::string& message) { sink(TALIXLog::Warning, message); };
    parts.crash = [] { TerminateProcess(GetCurrentProcess(), ServerCrashed); };
    return parts;
}

int Serve(const LogFile& log, const ServerOptions& options)
{
    const LogSink sink = [&](TALIXLog::LogLevel level, const std::string& message) {
        log.Write("Pellwick", level, message);
    };
    ServerInstance instance(options.identity);
    switch (instance.Claim())
    {
    case ServerInstance::Outcome::TakenByAnother:
        return Fail(log, ServerAlreadyRunning, "another server runs as " + options.identity + " already");
    case ServerInstance::Outcome::Failed:
        return Fail(log, ServerFailed, "cannot serve as " + options.identity + ": " + SystemMessage(GetLastError()));
    case ServerInstance::Outcome::Claimed:
        break;
    }
    RemoveUnfinishedFiles(SettingsFolder());
    const Handle wake(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    if (!wake)
        return Fail(log, ServerFailed, "no event: " + SystemMessage(GetLastError()));
    const std::unique_ptr<IdentitySource> source = ChooseIdentitySource(sink, wake.get());
    HostRegistry hosts(*source, MakeServerParts(sink));
    Agent::ServerApplication application(options.identity, {options.quitAfterSeconds, options.idleAfterSeconds}, hosts);
    sink(TALIXLog::Info, "Serving as " + options.identity);
    instance.SetReady();
    application.Run(instance.QuitEvent(), wake.get());
    instance.ResetReady();
    sink(TALIXLog::Info, "Quitting as " + options.identity);
    application.DisconnectHosts();
    if (!source->Shutdown())
        std::_Exit(ServerQuit); // A request cannot be cancelled: its thread ends with the process.
    return ServerQuit;
}

} // namespace

int main()
{
    ServerOptions options;
    const std::string problem = ParseServerOptions(ProcessArguments(), options);
    if (problem.empty() && options.help)
    {
        std::fputs(HelpText().c_str(), stdout);
        return ServerQuit;
    }
    if (problem.empty() && options.version)
    {
        std::puts("Pellwick.exe " AGENT_VERSION);
        return ServerQuit;
    }
    if (problem.empty() && !options.checkScenario.empty())
        return CheckScenarioFile(options.checkScenario);
    const LogFile log(DefaultLogFile());
    if (!problem.empty())
        return Fail(log, ServerUsage, problem + "; see Pellwick.exe --help");
    try
    {
        return options.quit ? QuitOther(log, options.identity) : Serve(log, options);
    }
    catch (const std::exception& error)
    {
        return Fail(log, ServerFailed, error.what());
    }
}
