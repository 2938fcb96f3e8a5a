#ifndef ORLINDEX_DOCTOR_LOADMESSAGES_H
#define ORLINDEX_DOCTOR_LOADMESSAGES_H

#include <optional>
#include <string>

#include "locate/StartUpObserver.h"

namespace Orlindex::Doctor {

// What the process that loads a plugin says to the one that started it: a line for each thing, written as it happens,
// so that the last one is known however the process ends.

struct LoadMessage
{
    enum class Kind
    {
        Library,   ///< The host's library is loaded: `state` and `error`.
        Step,      ///< `number` is a LoadStep, with `state` and `error`.
        Object,    ///< `number` is a PluginObject, `error` is 1 where the plugin has it.
        Exception, ///< `text`, UTF-8.
        End        ///< The load came to its end; `number` is 1 where it succeeded.
    };

    Kind kind;
    unsigned long number = 0;
    Kestrany::IdentityServices::LoadState state = Kestrany::IdentityServices::LoadState::Begun;
    unsigned long error = 0;
    std::string text = {};
};

/// Without line end.
std::string LineOf(const LoadMessage& message);

/// Nothing for a line that is none of them: a plugin may have got hold of the pipe.
std::optional<LoadMessage> ParseLoadMessage(const std::string& line);

} // namespace Orlindex::Doctor

#endif
