#include "process/ServerOptions.h"

#include <charconv>

#include "process/ServerInstance.h"

namespace Kestrany::Simulator {

namespace {

/// A week: what is left behind by mistake is gone some day.
constexpr unsigned int MaxSeconds = 7 * 24 * 60 * 60;

std::optional<unsigned int> ParseSeconds(const std::string& text)
{
    unsigned int seconds = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, seconds);
    if (error != std::errc() || rest != end || seconds < 1 || seconds > MaxSeconds)
        return std::nullopt;
    return seconds;
}

} // namespace

std::string ParseServerOptions(const std::vector<std::string>& arguments, ServerOptions& options)
{
    bool identityGiven = false;
    options.identity = DefaultIdentity;
    for (std::size_t index = 0; index < arguments.size(); ++index)
    {
        const std::string& argument = arguments[index];
        if (argument == "--help")
            options.help = true;
        else if (argument == "--version")
            options.version = true;
        else if (argument != "--identity" && argument != "--quit-after")
            return "unknown argument \"" + argument + "\"";
        else if (index + 1 == arguments.size())
            return argument + " needs a value";
        else if (argument == "--quit-after")
        {
            options.quitAfterSeconds = ParseSeconds(arguments[++index]);
            if (!options.quitAfterSeconds)
                return "--quit-after takes 1 to " + std::to_string(MaxSeconds) + " seconds, not \"" + arguments[index] +
                       "\"";
        }
        else if (identityGiven)
            return "--identity is given twice";
        else
        {
            identityGiven = true;
            options.identity = arguments[++index];
            if (!IsValidIdentity(options.identity))
                return "--identity takes 1 to 120 letters, digits and . _ -, not \"" + options.identity + "\"";
        }
    }
    return {};
}

} // namespace Kestrany::Simulator
