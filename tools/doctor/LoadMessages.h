#ifndef ORLINDEX_DOCTOR_LOADMESSAGES_H
#define ORLINDEX_DOCTOR_LOADMESSAGES_H

#include <optional>
#include <string>

#include "MessageLines.h"
#include "locate/StartUpObserver.h"

namespace Orlindex::Doctor {

// The messages from the process that loads a plugin to the one that started it. Each is a line, written as soon as the
// thing happens, so that the last step is known however the process ends.

struct LoadMessage
{
    /// Library: the host's library is loaded, `state` and `error`.
    /// Step: `number` is a LoadStep, with `state` and `error`.
    /// Object: `number` is a PluginObject, `error` is 1 if the plugin has it.
    /// Exception: `text`, UTF-8.
    /// End: the load ended, `number` is 1 if it succeeded.
    using Kind = MessageLine::Kind;

    Kind kind;
    unsigned long number = 0;
    Kestrany::IdentityServices::LoadState state = Kestrany::IdentityServices::LoadState::Begun;
    unsigned long error = 0;
    std::string text = {};
};

/// The message as a line, without line end.
std::string LineOf(const LoadMessage& message);

/// nullopt if the line is not a message: a plugin may write to the pipe, too.
std::optional<LoadMessage> ParseLoadMessage(const std::string& line);

} // namespace Orlindex::Doctor

#endif
