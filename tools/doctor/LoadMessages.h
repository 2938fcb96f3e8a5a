#ifndef ORLINDEX_DOCTOR_LOADMESSAGES_H
#define ORLINDEX_DOCTOR_LOADMESSAGES_H

#include <optional>
#include <string>

#include "MessageLines.h"
#include "load/StartObserver.h"

namespace Orlindex::Doctor {

// What the process that loads a plugin says to the one that started it: a line for each thing, written as it happens,
// so that the last one is known however the process ends.

struct LoadMessage
{
    /// Library: the host's library is loaded, `state` and `error`.
    /// Step: `number` is a LoadStep, with `state` and `error`.
    /// Object: `number` is a PluginObject, `error` is 1 if the plugin has it.
    /// Exception: `text`, UTF-8.
    /// End: the load came to its end, `number` is 1 if it succeeded.
    using Kind = MessageLine::Kind;

    Kind kind;
    unsigned long number = 0;
    Kestrany::IdentityServices::LoadState state = Kestrany::IdentityServices::LoadState::Begun;
    unsigned long error = 0;
    std::string text = {};
};

/// Without line end.
std::string LineOf(const LoadMessage& message);

/// nullopt if the line is no message: a plugin may have got hold of the pipe.
std::optional<LoadMessage> ParseLoadMessage(const std::string& line);

} // namespace Orlindex::Doctor

#endif
