#ifndef SIMULATOR_PROCESS_COMMANDLINE_H
#define SIMULATOR_PROCESS_COMMANDLINE_H

#include <string>
#include <vector>

namespace Kestrany::Simulator {

/// A command line that the program's runtime splits into exactly these texts again.
std::wstring JoinCommandLine(const std::vector<std::wstring>& texts);

/// This process's arguments after the program's name.
std::vector<std::string> ProcessArguments();

} // namespace Kestrany::Simulator

#endif
