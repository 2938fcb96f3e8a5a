// The simulator's server application: takes the place of the identity service's process, so that hosts and tools can
// start, find and quit it.

#include <cstdio>
#include <exception>

#include "platform/LogFile.h"
#include "platform/Text.h"
#include "process/CommandLine.h"
#include "process/ServerExitCode.h"
#include "process/ServerInstance.h"
#include "process/ServerOptions.h"
#include "server/Service.h"

using namespace Kestrany;
using namespace Kestrany::Simulator;

namespace {

constexpr char HelpText[] =
    "Pellwick.exe " SIMULATOR_VERSION " (simulator): stands in for the single sign-on server application.\n"
    "\n"
    "Usage: Pellwick.exe [--identity NAME] [--quit-after SECONDS]\n"
    "       Pellwick.exe --help | --version\n"
    "\n"
    "  --identity NAME       the name to run under, 1 to 120 letters, digits and . _ -\n"
    "                        (without it: %s)\n"
    "  --quit-after SECONDS  quit after this time if nobody asked before\n"
    "\n"
    "It runs until it is asked to quit; SSOServerManager::QuitSSOServerProcess asks.\n"
    "Meanwhile it answers SSOClientPrivate::Ping, and hangs at FreezeSSOServerProcess.\n"
    "\n"
    "Exit codes: 0 it quit as asked, 1 the system refused something, 2 wrong arguments,\n"
    "            3 another process runs under the same name.\n";

int Fail(const LogFile& log, ServerExitCode code, const std::string& message)
{
    log.Write("Pellwick", TALIXLog::Error, message);
    std::fprintf(stderr, "Pellwick.exe: %s\n", message.c_str());
    return code;
}

int Serve(const LogFile& log, const ServerOptions& options)
{
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
    Service service(options.identity);
    log.Write("Pellwick", TALIXLog::Info, "Serving as " + options.identity);
    instance.SetReady();
    service.Run(instance.QuitEvent(), options.quitAfterSeconds ? *options.quitAfterSeconds * 1000 : INFINITE);
    log.Write("Pellwick", TALIXLog::Info, "Quitting as " + options.identity);
    return ServerQuit;
}

} // namespace

int main()
{
    ServerOptions options;
    const std::string problem = ParseServerOptions(ProcessArguments(), options);
    if (problem.empty() && options.help)
    {
        std::printf(HelpText, DefaultIdentity);
        return ServerQuit;
    }
    if (problem.empty() && options.version)
    {
        std::puts("Pellwick.exe " SIMULATOR_VERSION " (simulator)");
        return ServerQuit;
    }
    const LogFile log(DefaultLogFile());
    if (!problem.empty())
        return Fail(log, ServerUsage, problem + "; see Pellwick.exe --help");
    try
    {
        return Serve(log, options);
    }
    catch (const std::exception& error)
    {
        return Fail(log, ServerFailed, error.what());
    }
}
