#ifndef ORLINDEX_DOCTOR_COMMANDS_H
#define ORLINDEX_DOCTOR_COMMANDS_H

#include <stdexcept>
#include <string>
#include <vector>

#include "Report.h"

namespace Orlindex::Doctor {

// The command line (CommandLine.cpp) and the commands that it can request (StartUpCommand.cpp, CheckCommand.cpp,
// ProviderCommand.cpp).

enum class Command
{
    StartUp,
    Check,
    Provider,
    Help,
    Version
};

/// The command line.
struct Options
{
    Command command = Command::StartUp;
    std::wstring host;          ///< Empty for the tool's own folder.
    std::wstring module;        ///< For `check`.
    std::wstring compatibility; ///< For `check`; empty for the file beside the module.
    std::wstring config;        ///< For `provider`; empty for the file beside the server application.
    std::wstring server;        ///< For `provider`; empty for the first one that is configured.
    bool load = false;
    bool json = false;
    bool color = true;
    unsigned timeoutSeconds = 30;
};

/// The command line is wrong; what() says why.
class UsageError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// This process's arguments after the program's name.
std::vector<std::wstring> ProcessArguments();

/// Parses the arguments after the program's name. Throws UsageError.
Options ParseOptions(const std::vector<std::wstring>& arguments);

std::string HelpText();

/// Retraces the start-up of a host in the folder `host`, an absolute path.
Diagnosis RunStartUp(const Options& options, const std::wstring& host, Report& report);

/// Checks the plugin module `module` against the contract. Both paths are absolute.
Diagnosis RunCheck(const Options& options, const std::wstring& host, const std::wstring& module, Report& report);

/// Examines the OpenID Connect provider that the sign-in agent is configured for. Sends requests to it.
Diagnosis RunProvider(const Options& options, const std::wstring& host, Report& report);

} // namespace Orlindex::Doctor

#endif
