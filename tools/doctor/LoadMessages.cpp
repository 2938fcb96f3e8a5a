#include "LoadMessages.h"

namespace Orlindex::Doctor {

using Kestrany::IdentityServices::LoadState;
using Kestrany::IdentityServices::LoadStep;
using Kestrany::IdentityServices::PluginObject;

static_assert(MessageLine::Steps == static_cast<std::uint32_t>(LoadStep::ObtainInterfaces) + 1);
static_assert(MessageLine::States == static_cast<std::uint32_t>(LoadState::Failed) + 1);
static_assert(MessageLine::Objects == static_cast<std::uint32_t>(PluginObject::ClientPrivate) + 1);

std::string LineOf(const LoadMessage& message)
{
    return LineOf(MessageLine{message.kind, static_cast<std::uint32_t>(message.number),
                              static_cast<std::uint32_t>(message.state), static_cast<std::uint32_t>(message.error),
                              message.text});
}

std::optional<LoadMessage> ParseLoadMessage(const std::string& line)
{
    const std::optional<MessageLine> message = ParseMessageLine(line);
    if (!message)
        return std::nullopt;
    return LoadMessage{message->kind, message->number, static_cast<LoadState>(message->state), message->error,
                       message->text};
}

} // namespace Orlindex::Doctor
