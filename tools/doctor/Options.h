#ifndef ORLINDEX_DOCTOR_OPTIONS_H
#define ORLINDEX_DOCTOR_OPTIONS_H

#include <stdexcept>
#include <string>
#include <vector>

namespace Orlindex::Doctor {

enum class Command
{
    Start,
    Check,
    Help,
    Version
};

/// The command line.
struct Options
{
    Command command = Command::Start;
    std::wstring host;          ///< Empty: the tool's own folder.
    std::wstring module;        ///< Of `check`.
    std::wstring compatibility; ///< Of `check`; empty: the file beside the module.
    bool load = false;
    bool json = false;
    bool color = true;
    unsigned timeoutSeconds = 30;
};

/// A wrong command line, in words.
class UsageError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// `arguments` without the program's name.
Options ParseOptions(const std::vector<std::wstring>& arguments);

std::string HelpText();

} // namespace Orlindex::Doctor

#endif
