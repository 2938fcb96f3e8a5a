#include "server/ServerOptions.h"

#include <charconv>
#include <sstream>

#include <boost/program_options.hpp>
#include <windows.h>

#include <shellapi.h>

#include "platform/Base.h"
#include "platform/ObjectNamespace.h"

namespace Kestrany::Agent {

namespace options = boost::program_options;

namespace {

/// A week: a server that was left running by mistake ends some day.
constexpr unsigned int MaxSeconds = 7 * 24 * 60 * 60;

constexpr unsigned int LineLength = 100;

options::options_description DescribedOptions()
{
    const auto text = [](const char* name) { return options::value<std::string>()->value_name(name); };
    const std::string defaultIdentity = std::string("(without it: ") + DefaultIdentity + ")";
    options::options_description described(LineLength);
    auto add = described.add_options();
    add("identity", text("NAME")->default_value(DefaultIdentity, ""),
        ("the name to run under, 1 to 120 letters, digits and . _ -\n" + defaultIdentity).c_str());
    add("quit-after", text("SECONDS"), "quit after this time if nobody asked before");
    add("idle-after", text("SECONDS")->default_value("60", ""),
        "quit after this time without a host (without it: 60; 0 for never)");
    add("quit", options::bool_switch(), "ask the server that runs under the name to quit, and wait for it");
    add("check-scenario", text("FILE"), "say whether FILE is a valid scenario, and if not, where and why");
    return described;
}

options::options_description AllOptions()
{
    options::options_description all;
    all.add(DescribedOptions());
    auto add = all.add_options();
    add("help", options::bool_switch());
    add("version", options::bool_switch());
    return all;
}

std::optional<unsigned int> ParseSeconds(const std::string& text, unsigned int minimum)
{
    unsigned int seconds = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, seconds);
    if (error != std::errc() || rest != end || seconds < minimum || seconds > MaxSeconds)
        return std::nullopt;
    return seconds;
}

std::string SecondsProblem(const char* option, unsigned int minimum, const std::string& text)
{
    return std::string(option) + " takes " + std::to_string(minimum) + " to " + std::to_string(MaxSeconds) +
           " seconds, not \"" + text + "\"";
}

/// Converts the values. Returns what is wrong with one, empty if nothing is.
std::string Convert(const options::variables_map& values, ServerOptions& result)
{
    const auto text = [&](const char* name) {
        return values.count(name) == 0 ? std::string() : values[name].as<std::string>();
    };
    result.quit = values["quit"].as<bool>();
    result.help = values["help"].as<bool>();
    result.version = values["version"].as<bool>();
    result.identity = text("identity");
    if (!IsValidIdentity(result.identity))
        return "--identity takes 1 to 120 letters, digits and . _ -, not \"" + result.identity + "\"";
    if (values.count("quit-after") != 0)
    {
        result.quitAfterSeconds = ParseSeconds(text("quit-after"), 1);
        if (!result.quitAfterSeconds)
            return SecondsProblem("--quit-after", 1, text("quit-after"));
    }
    const std::optional<unsigned int> idleAfter = ParseSeconds(text("idle-after"), 0);
    if (!idleAfter)
        return SecondsProblem("--idle-after", 0, text("idle-after"));
    result.idleAfterSeconds = *idleAfter == 0 ? std::nullopt : idleAfter;
    result.checkScenario = text("check-scenario");
    if (values.count("check-scenario") != 0 && result.checkScenario.empty())
        return "--check-scenario takes the name of a file";
    return {};
}

} // namespace

std::vector<std::string> ProcessArguments()
{
    int count = 0;
    const LocalMemory<wchar_t*> texts(CommandLineToArgvW(GetCommandLineW(), &count));
    std::vector<std::string> arguments;
    for (int index = 1; texts && index < count; ++index)
        arguments.push_back(Narrow(texts.get()[index]));
    return arguments;
}

std::string ParseServerOptions(const std::vector<std::string>& arguments, ServerOptions& result)
{
    using namespace options::command_line_style;
    const options::options_description all = AllOptions();
    try
    {
        // Names in full, and values as arguments of their own.
        const options::parsed_options parsed = options::command_line_parser(arguments)
                                                   .options(all)
                                                   .style(allow_long | long_allow_next)
                                                   .allow_unregistered()
                                                   .run();
        for (const options::option& option : parsed.options)
        {
            if (option.unregistered || option.position_key >= 0)
                return "unknown argument \"" + option.original_tokens.front() + "\"";
        }
        options::variables_map values;
        options::store(parsed, values);
        return Convert(values, result);
    }
    catch (const options::multiple_occurrences& error)
    {
        return error.get_option_name() + " is given twice";
    }
    catch (const options::invalid_command_line_syntax& error)
    {
        if (error.kind() == options::invalid_syntax::missing_parameter)
            return error.get_option_name() + " needs a value";
        return error.what();
    }
    catch (const options::error& error)
    {
        return error.what();
    }
}

std::string DescribeServerOptions()
{
    std::ostringstream text;
    text << DescribedOptions();
    return text.str();
}

} // namespace Kestrany::Agent
