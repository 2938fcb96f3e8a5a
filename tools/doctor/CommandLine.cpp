#include <algorithm>
#include <boost/program_options.hpp>
#include <sstream>
#include <windows.h>

#include <shellapi.h>

#include "Commands.h"
#include "ExitCode.h"
#include "base/Handles.h"
#include "base/Text.h"

namespace Orlindex::Doctor {
namespace {

namespace po = boost::program_options;
using Kestrany::IdentityServices::LocalMemory;
using Kestrany::IdentityServices::Narrow;

constexpr unsigned longestTimeout = 3600; // Seconds.

/// Width of the help text in characters.
constexpr unsigned lineLength = 110;

/// The options that the help text describes line by line.
po::options_description DescribedOptions()
{
    const auto value = [](const char* name) { return po::wvalue<std::wstring>()->value_name(name); };
    po::options_description described(lineLength);
    auto add = described.add_options();
    add("host", value("DIR"), "examine the machine as a host in this folder sees it (default: the tool's own folder)");
    add("load", "also load the plugin, in a separate process, and get the factory and its interfaces;\n"
                "without it nothing is loaded and no code of the plugin runs");
    add("timeout", value("SECONDS"), "how long a load may take (default: 30)");
    add("compatibility", value("FILE"), "for check: the version compatibility file (default: the one beside MODULE)");
    add("config", value("FILE"), "for provider: the configuration (default: the one beside the server application)");
    add("server", value("NAME"), "for provider: production, staging or development (default: the first configured)");
    add("json", "one JSON document instead of text (docs/schema/doctor-report.schema.json)");
    add("no-color", "plain text; also if NO_COLOR is set, or the output is not a console");
    return described;
}

po::options_description AllOptions()
{
    po::options_description all;
    all.add(DescribedOptions());
    auto add = all.add_options();
    add("help,h", "");
    add("version", "");
    return all;
}

/// The arguments up to the first request for help or the version, which is fulfilled whatever follows it.
std::vector<std::wstring> UpToHelp(const std::vector<std::wstring>& arguments)
{
    const auto help = std::find_if(arguments.begin(), arguments.end(), [](const std::wstring& argument) {
        return argument == L"--help" || argument == L"-h" || argument == L"--version";
    });
    return {arguments.begin(), help == arguments.end() ? help : help + 1};
}

/// What the value of an option is; empty if the option takes none.
std::string ValueKind(const std::string& option)
{
    if (option == "host")
        return "a folder";
    if (option == "timeout")
        return "a number of seconds";
    if (option == "server")
        return "the name of a server";
    return option == "compatibility" || option == "config" ? "a file" : "";
}

/// Throws if the value is empty, or looks like the next option.
const std::wstring& ValueOf(const po::woption& option)
{
    if (option.value.front().empty() || option.value.front().front() == L'-')
        throw UsageError("--" + option.string_key + " needs " + ValueKind(option.string_key));
    return option.value.front();
}

unsigned ParseSeconds(const std::wstring& text)
{
    unsigned seconds = 0;
    const bool number = std::all_of(text.begin(), text.end(), [&seconds](wchar_t digit) {
        if (digit < L'0' || digit > L'9' || seconds > longestTimeout)
            return false;
        seconds = seconds * 10 + static_cast<unsigned>(digit - L'0');
        return true;
    });
    if (!number || seconds == 0 || seconds > longestTimeout)
        throw UsageError("--timeout needs a number of seconds from 1 to 3600, not '" + Narrow(text) + "'");
    return seconds;
}

std::wstring ParseServer(std::wstring name)
{
    if (name != L"production" && name != L"staging" && name != L"development")
        throw UsageError("--server needs production, staging or development, not '" + Narrow(name) + "'");
    return name;
}

void TakeOption(const po::woption& option, Options& options)
{
    if (option.string_key == "host")
        options.host = ValueOf(option);
    else if (option.string_key == "compatibility")
        options.compatibility = ValueOf(option);
    else if (option.string_key == "config")
        options.config = ValueOf(option);
    else if (option.string_key == "server")
        options.server = ParseServer(ValueOf(option));
    else if (option.string_key == "timeout")
        options.timeoutSeconds = ParseSeconds(ValueOf(option));
    else if (option.string_key == "load")
        options.load = true;
    else if (option.string_key == "json")
        options.json = true;
    else if (option.string_key == "no-color")
        options.color = false;
    else if (option.string_key == "help")
        options.command = Command::Help;
    else if (option.string_key == "version")
        options.command = Command::Version;
}

/// An argument that is not an option: the command, or its module.
void TakeWord(const std::wstring& word, Options& options)
{
    if (options.command == Command::StartUp && word == L"check")
        options.command = Command::Check;
    else if (options.command == Command::StartUp && word == L"provider")
        options.command = Command::Provider;
    else if (options.command == Command::Check && options.module.empty() && !word.empty())
        options.module = word;
    else
        throw UsageError("unexpected argument: '" + Narrow(word) + "'");
}

std::string SyntaxProblem(const po::invalid_command_line_syntax& error, const po::options_description& known)
{
    const std::string name = error.get_option_name(); // With or without the dashes before it.
    const std::string option = name.substr(std::min(name.find_first_not_of('-'), name.size()));
    if (option.empty() || !known.find_nothrow(option, false))
        return "unknown option: --" + option;
    const std::string kind = ValueKind(option);
    return "--" + option + (kind.empty() ? " takes no value" : " needs " + kind);
}

/// The arguments in order, each split into an option and its value. Throws UsageError.
std::vector<po::woption> SplitArguments(const std::vector<std::wstring>& arguments)
{
    using namespace po::command_line_style;
    constexpr int style =
        allow_long | long_allow_next | long_allow_adjacent | allow_short | allow_dash_for_short | short_allow_next;
    // The parser would drop the argument that ends the options elsewhere. No argument of this tool starts with a dash.
    if (std::find(arguments.begin(), arguments.end(), L"--") != arguments.end())
        throw UsageError("unknown option: --");
    const po::options_description all = AllOptions();
    try
    {
        return po::wcommand_line_parser(arguments).options(all).style(style).allow_unregistered().run().options;
    }
    catch (const po::invalid_command_line_syntax& error)
    {
        throw UsageError(SyntaxProblem(error, all));
    }
}

void TakeArgument(const po::woption& argument, Options& options)
{
    const std::wstring& token = argument.original_tokens.front();
    const bool named = !argument.unregistered && !argument.string_key.empty();
    if (named)
        TakeOption(argument, options);
    else if (!token.empty() && token.front() == L'-')
        throw UsageError("unknown option: " + Narrow(token));
    else
        TakeWord(token, options);
}

} // namespace

std::vector<std::wstring> ProcessArguments()
{
    int count = 0;
    const LocalMemory<wchar_t*> texts(CommandLineToArgvW(GetCommandLineW(), &count));
    std::vector<std::wstring> arguments;
    for (int index = 1; texts && index < count; ++index)
        arguments.emplace_back(texts.get()[index]);
    return arguments;
}

Options ParseOptions(const std::vector<std::wstring>& arguments)
{
    Options options;
    for (const po::woption& argument : SplitArguments(UpToHelp(arguments)))
        TakeArgument(argument, options); // Of an option that is given twice, the last value counts.
    if (options.command == Command::Help || options.command == Command::Version)
        return options;
    if (options.command == Command::Check && options.module.empty())
        throw UsageError("check needs a plugin module file");
    if (options.command != Command::Check && !options.compatibility.empty())
        throw UsageError("--compatibility belongs to check");
    if (options.command != Command::Provider && !(options.config.empty() && options.server.empty()))
        throw UsageError(std::string(options.config.empty() ? "--server" : "--config") + " belongs to provider");
    if (options.command == Command::Provider && options.load)
        throw UsageError("provider loads nothing: --load does not belong to it");
    return options;
}

std::string HelpText()
{
    std::ostringstream text;
    text << R"(Tells why sign-in starts on this machine, or why not.

  orlindex-doctor [options]               retraces the start-up of a host, step by step
  orlindex-doctor check MODULE [options]  checks a plugin module file against the contract
  orlindex-doctor provider [options]      examines the OpenID Connect provider that the sign-in agent is configured for

Options
)" << DescribedOptions()
         << R"(  --help, --version

The tool itself changes nothing: no file, no registry value. A plugin that --load runs may do anything.
A plugin module that the library would not trust is never loaded. Only provider sends requests: two, to the provider.

Exit codes
)" << ExitCodeLines();
    return text.str();
}

} // namespace Orlindex::Doctor
