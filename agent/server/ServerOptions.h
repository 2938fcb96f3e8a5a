#ifndef AGENT_SERVER_SERVEROPTIONS_H
#define AGENT_SERVER_SERVEROPTIONS_H

#include <optional>
#include <string>
#include <vector>

namespace Kestrany::Agent {

/// The server application's arguments.
struct ServerOptions
{
    std::string identity;
    std::optional<unsigned int> quitAfterSeconds;
    std::optional<unsigned int> idleAfterSeconds; ///< nullopt for never.
    std::string checkScenario;                    ///< A file to check, instead of serving; empty for none.
    bool quit = false;                            ///< Asks the server that runs to quit, instead of serving.
    bool help = false;
    bool version = false;
};

/// This process's arguments after the program's name.
std::vector<std::string> ProcessArguments();

/// Parses the arguments after the program's name. Returns what is wrong with them, empty if nothing is.
std::string ParseServerOptions(const std::vector<std::string>& arguments, ServerOptions& options);

/// The lines of the help text that describe the options.
std::string DescribeServerOptions();

} // namespace Kestrany::Agent

#endif
