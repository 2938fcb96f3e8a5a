// What the program knows, and how it says that to the user.
#ifndef DESKTOP_HOST_HOSTSTATE_H
#define DESKTOP_HOST_HOSTSTATE_H

#include <optional>
#include <string>

#include "Session.h"
#include "View.h"

namespace DesktopHost {

struct HostState
{
    UserState user;
    std::optional<Task> running; ///< What the user waits for.
    bool isStarted = false;
    bool hasFailed = false;    ///< The library did not start, which is final for the process.
    bool isCancelling = false; ///< The running sign-in shall end.
    bool isCancelBusy = false; ///< A Cancel has no outcome yet.
    std::wstring message;
};

Display ToDisplay(const HostState& state);

/// The code, its meaning, and the command that finds the cause.
std::wstring StartFailureText(talix_status_code code);

/// What failed, the code and its meaning.
std::wstring TaskFailureText(Task task, talix_status_code code);

} // namespace DesktopHost

#endif
