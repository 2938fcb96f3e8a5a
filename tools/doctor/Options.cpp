#include "Options.h"

#include "ExitCode.h"
#include "base/Text.h"

namespace Orlindex::Doctor {
namespace {

using Kestrany::IdentityServices::Narrow;

constexpr unsigned longestTimeout = 3600; // Seconds.

class ArgumentReader
{
public:
    explicit ArgumentReader(const std::vector<std::wstring>& arguments) : arguments_(arguments) {}

    bool AtEnd() const { return next_ == arguments_.size(); }
    const std::wstring& Take() { return arguments_[next_++]; }

    std::wstring TakeValue(const std::wstring& option, const char* what)
    {
        if (AtEnd() || arguments_[next_].empty() || arguments_[next_].front() == L'-')
            throw UsageError(Narrow(option) + " needs " + what);
        return Take();
    }

private:
    const std::vector<std::wstring>& arguments_;
    std::size_t next_ = 0;
};

unsigned ParseSeconds(const std::wstring& text)
{
    unsigned seconds = 0;
    for (const wchar_t digit : text)
    {
        if (digit < L'0' || digit > L'9' || seconds > longestTimeout)
            throw UsageError("--timeout needs a number of seconds from 1 to 3600, not '" + Narrow(text) + "'");
        seconds = seconds * 10 + static_cast<unsigned>(digit - L'0');
    }
    if (seconds == 0 || seconds > longestTimeout)
        throw UsageError("--timeout needs a number of seconds from 1 to 3600, not '" + Narrow(text) + "'");
    return seconds;
}

void ParseOption(const std::wstring& option, ArgumentReader& reader, Options& options)
{
    if (option == L"--host")
        options.host = reader.TakeValue(option, "a folder");
    else if (option == L"--compatibility")
        options.compatibility = reader.TakeValue(option, "a file");
    else if (option == L"--timeout")
        options.timeoutSeconds = ParseSeconds(reader.TakeValue(option, "a number of seconds"));
    else if (option == L"--load")
        options.load = true;
    else if (option == L"--json")
        options.json = true;
    else if (option == L"--no-color")
        options.color = false;
    else if (option == L"--help" || option == L"-h")
        options.command = Command::Help;
    else if (option == L"--version")
        options.command = Command::Version;
    else
        throw UsageError("unknown option: " + Narrow(option));
}

void ParseWord(const std::wstring& word, Options& options)
{
    if (options.command == Command::Start && word == L"check")
        options.command = Command::Check;
    else if (options.command == Command::Check && options.module.empty() && !word.empty())
        options.module = word;
    else
        throw UsageError("unexpected argument: '" + Narrow(word) + "'");
}

} // namespace

Options ParseOptions(const std::vector<std::wstring>& arguments)
{
    Options options;
    ArgumentReader reader(arguments);
    while (!reader.AtEnd())
    {
        const std::wstring& argument = reader.Take();
        if (!argument.empty() && argument.front() == L'-')
            ParseOption(argument, reader, options);
        else
            ParseWord(argument, options);
        if (options.command == Command::Help || options.command == Command::Version)
            return options; // Whatever else is asked for.
    }
    if (options.command == Command::Check && options.module.empty())
        throw UsageError("check needs a plugin module file");
    if (options.command != Command::Check && !options.compatibility.empty())
        throw UsageError("--compatibility belongs to check");
    return options;
}

std::string HelpText()
{
    return R"(Tells why sign-in starts on this machine, or why not.

  orlindex-doctor [options]               retraces the start of a host, step by step
  orlindex-doctor check MODULE [options]  checks a plugin module file against the contract

Options
  --host DIR            answer as a host in this folder would get it (default: the tool's own folder)
  --load                go on to load the plugin, in a process of its own, as far as its interfaces;
                        without it nothing is loaded and no code of the plugin runs
  --timeout SECONDS     how long a load may take (default: 30)
  --compatibility FILE  check: the version compatibility file (default: the one beside MODULE)
  --json                one JSON document instead of text (docs/schema/doctor-report.schema.json)
  --no-color            plain text; also when NO_COLOR is set, or the output is no console
  --help, --version

The tool itself changes nothing: no file, no registry value. A plugin that --load runs may do anything.
A plugin module that the library would not trust is never loaded.

Exit codes
)" + ExitCodeLines();
}

} // namespace Orlindex::Doctor
