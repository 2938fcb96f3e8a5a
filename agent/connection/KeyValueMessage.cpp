#include "connection/KeyValueMessage.h"

#include <sstream>

namespace Kestrany::Agent {

std::string WriteAnswers(const Answers& answers)
{
    std::string message;
    for (const auto& [name, value] : answers)
        message += name + "=" + value + "\n";
    return message;
}

Answers ReadAnswers(const std::string& message)
{
    Answers answers;
    std::istringstream lines(message);
    for (std::string line; std::getline(lines, line);)
    {
        const std::size_t separator = line.find('=');
        if (separator != std::string::npos && separator > 0)
            answers[line.substr(0, separator)] = line.substr(separator + 1);
    }
    return answers;
}

} // namespace Kestrany::Agent
