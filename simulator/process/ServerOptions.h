#ifndef SIMULATOR_PROCESS_SERVEROPTIONS_H
#define SIMULATOR_PROCESS_SERVEROPTIONS_H

#include <optional>
#include <string>
#include <vector>

namespace Kestrany::Simulator {

/// The server application's arguments.
struct ServerOptions
{
    std::string identity;
    std::optional<unsigned int> quitAfterSeconds;
    bool help = false;
    bool version = false;
};

/// Reads the arguments after the program's name. Answers what is wrong with them, empty when nothing is.
std::string ParseServerOptions(const std::vector<std::string>& arguments, ServerOptions& options);

} // namespace Kestrany::Simulator

#endif
