#include "LoadMessages.h"

#include <algorithm>
#include <cstdio>

namespace Orlindex::Doctor {

using Kestrany::IdentityServices::LoadState;
using Kestrany::IdentityServices::LoadStep;
using Kestrany::IdentityServices::PluginObject;

namespace {

bool IsSound(const LoadMessage& message)
{
    switch (message.kind)
    {
    case LoadMessage::Kind::Library:
    case LoadMessage::Kind::Exception:
        return true;
    case LoadMessage::Kind::Step:
        return message.number <= static_cast<unsigned long>(LoadStep::ObtainInterfaces);
    case LoadMessage::Kind::Object:
        return message.number <= static_cast<unsigned long>(PluginObject::ClientPrivate);
    case LoadMessage::Kind::End:
        return message.number <= 1;
    }
    return false;
}

} // namespace

std::string LineOf(const LoadMessage& message)
{
    std::string text = message.text;
    std::replace_if(
        text.begin(), text.end(), [](char character) { return static_cast<unsigned char>(character) < 0x20; }, ' ');
    return std::to_string(static_cast<int>(message.kind)) + ' ' + std::to_string(message.number) + ' ' +
           std::to_string(static_cast<int>(message.state)) + ' ' + std::to_string(message.error) + ' ' + text;
}

std::optional<LoadMessage> ParseLoadMessage(const std::string& line)
{
    unsigned kind = 0;
    unsigned state = 0;
    int text = 0;
    LoadMessage message = {};
    if (std::sscanf(line.c_str(), "%1u %10lu %1u %10lu%n", &kind, &message.number, &state, &message.error, &text) !=
            4 ||
        kind > static_cast<unsigned>(LoadMessage::Kind::End) || state > static_cast<unsigned>(LoadState::Failed))
        return std::nullopt;
    message.kind = static_cast<LoadMessage::Kind>(kind);
    message.state = static_cast<LoadState>(state);
    if (static_cast<std::size_t>(text) + 1 <= line.size())
        message.text = line.substr(static_cast<std::size_t>(text) + 1);
    if (!IsSound(message))
        return std::nullopt;
    return message;
}

} // namespace Orlindex::Doctor
