#include "server/ServerOptions.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <set>

#include <windows.h>

#include <shellapi.h>

#include "platform/ObjectNamespace.h"
#include "platform/Text.h"

namespace Kestrany::Agent {

namespace {

/// A week: what is left behind by mistake is gone some day.
constexpr unsigned int MaxSeconds = 7 * 24 * 60 * 60;

std::optional<unsigned int> ParseSeconds(const std::string& text, unsigned int minimum)
{
    unsigned int seconds = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, seconds);
    if (error != std::errc() || rest != end || seconds < minimum || seconds > MaxSeconds)
        return std::nullopt;
    return seconds;
}

std::string SecondsProblem(const std::string& option, unsigned int minimum, const std::string& text)
{
    return option + " takes " + std::to_string(minimum) + " to " + std::to_string(MaxSeconds) + " seconds, not \"" +
           text + "\"";
}

std::string TakeQuitAfter(const std::string& value, ServerOptions& options)
{
    options.quitAfterSeconds = ParseSeconds(value, 1);
    return options.quitAfterSeconds ? std::string() : SecondsProblem("--quit-after", 1, value);
}

std::string TakeIdleAfter(const std::string& value, ServerOptions& options)
{
    const std::optional<unsigned int> seconds = ParseSeconds(value, 0);
    if (!seconds)
        return SecondsProblem("--idle-after", 0, value);
    options.idleAfterSeconds = *seconds == 0 ? std::nullopt : seconds;
    return {};
}

std::string TakeIdentity(const std::string& value, ServerOptions& options)
{
    options.identity = value;
    return IsValidIdentity(value) ? std::string()
                                  : "--identity takes 1 to 120 letters, digits and . _ -, not \"" + value + "\"";
}

std::string TakeScenario(const std::string& value, ServerOptions& options)
{
    options.checkScenario = value;
    return value.empty() ? "--check-scenario takes the name of a file" : std::string();
}

struct ValueOption
{
    const char* name;
    std::string (*take)(const std::string& value, ServerOptions& options);
};

constexpr ValueOption ValueOptions[] = {{"--identity", TakeIdentity},
                                        {"--quit-after", TakeQuitAfter},
                                        {"--idle-after", TakeIdleAfter},
                                        {"--check-scenario", TakeScenario}};

struct FlagOption
{
    const char* name;
    bool ServerOptions::* flag;
};

constexpr FlagOption FlagOptions[] = {
    {"--help", &ServerOptions::help}, {"--version", &ServerOptions::version}, {"--quit", &ServerOptions::quit}};

template <class Option, std::size_t Count>
const Option* FindOption(const Option (&options)[Count], const std::string& name)
{
    const auto* found =
        std::find_if(options, options + Count, [&](const Option& option) { return name == option.name; });
    return found == options + Count ? nullptr : found;
}

struct LocalFreer
{
    void operator()(wchar_t** texts) const { LocalFree(texts); }
};

} // namespace

std::vector<std::string> ProcessArguments()
{
    int count = 0;
    const std::unique_ptr<wchar_t*, LocalFreer> texts(CommandLineToArgvW(GetCommandLineW(), &count));
    std::vector<std::string> arguments;
    for (int index = 1; texts && index < count; ++index)
        arguments.push_back(ToDisplay(texts.get()[index]));
    return arguments;
}

std::string ParseServerOptions(const std::vector<std::string>& arguments, ServerOptions& options)
{
    std::set<std::string> given;
    options.identity = DefaultIdentity;
    for (std::size_t index = 0; index < arguments.size(); ++index)
    {
        const std::string& name = arguments[index];
        if (const FlagOption* flag = FindOption(FlagOptions, name))
        {
            options.*flag->flag = true;
            continue;
        }
        const ValueOption* option = FindOption(ValueOptions, name);
        if (option == nullptr)
            return "unknown argument \"" + name + "\"";
        if (++index == arguments.size())
            return name + " needs a value";
        if (!given.insert(name).second)
            return name + " is given twice";
        if (std::string problem = option->take(arguments[index], options); !problem.empty())
            return problem;
    }
    return {};
}

} // namespace Kestrany::Agent
