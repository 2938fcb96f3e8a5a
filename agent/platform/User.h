#ifndef AGENT_PLATFORM_USER_H
#define AGENT_PLATFORM_USER_H

#include <string>

#include <windows.h>

namespace Kestrany::Agent {

/// The SID of this process's user as text (S-1-...). Throws std::runtime_error on failure.
const std::wstring& OwnUserSid();

/// The SID of a process's user; empty on failure.
std::wstring UserSidOf(HANDLE process);

} // namespace Kestrany::Agent

#endif
