#include "MessageLines.h"

#include <algorithm>
#include <charconv>

namespace Orlindex::Doctor {

namespace {

/// A number and the space after it, taken off the front of a text.
std::optional<std::uint32_t> TakeNumber(const char*& next, const char* end)
{
    std::uint32_t number = 0;
    const auto [stop, error] = std::from_chars(next, end, number);
    if (error != std::errc() || stop == end || *stop != ' ')
        return std::nullopt;
    next = stop + 1;
    return number;
}

bool IsInRange(const MessageLine& message)
{
    if (message.state >= MessageLine::States)
        return false;
    switch (message.kind)
    {
    case MessageLine::Kind::Library:
    case MessageLine::Kind::Exception:
        return true;
    case MessageLine::Kind::Step:
        return message.number < MessageLine::Steps;
    case MessageLine::Kind::Object:
        return message.number < MessageLine::Objects;
    case MessageLine::Kind::End:
        return message.number <= 1;
    }
    return false;
}

} // namespace

bool LineSplitter::Take(const char* bytes, std::size_t count)
{
    for (std::size_t index = 0; index < count; ++index)
    {
        if (bytes_ == MostBytes)
            return false;
        ++bytes_;
        if (bytes[index] != '\n')
        {
            if (line_.size() < LongestLine)
                line_ += bytes[index];
            continue;
        }
        if (lines_ == MostLines)
            return false;
        ++lines_;
        take_(line_);
        line_.clear();
    }
    return true;
}

std::string LineOf(const MessageLine& message)
{
    std::string text = message.text;
    std::replace_if(
        text.begin(), text.end(), [](char character) { return static_cast<unsigned char>(character) < 0x20; }, ' ');
    return std::to_string(static_cast<unsigned>(message.kind)) + ' ' + std::to_string(message.number) + ' ' +
           std::to_string(message.state) + ' ' + std::to_string(message.error) + ' ' + text;
}

std::optional<MessageLine> ParseMessageLine(const std::string& line)
{
    const char* next = line.data();
    const char* const end = next + line.size();
    const auto kind = TakeNumber(next, end);
    if (!kind || *kind > static_cast<std::uint32_t>(MessageLine::Kind::End))
        return std::nullopt;
    const auto number = TakeNumber(next, end);
    const auto state = number ? TakeNumber(next, end) : std::nullopt;
    const auto error = state ? TakeNumber(next, end) : std::nullopt;
    if (!error)
        return std::nullopt;
    MessageLine message{static_cast<MessageLine::Kind>(*kind), *number, *state, *error, std::string(next, end)};
    if (!IsInRange(message))
        return std::nullopt;
    return message;
}

} // namespace Orlindex::Doctor
