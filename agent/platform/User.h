#ifndef AGENT_PLATFORM_USER_H
#define AGENT_PLATFORM_USER_H

#include <string>

#include <windows.h>

namespace Kestrany::Agent {

/// The SID of this process's user as text (S-1-...). Throws std::runtime_error when the system does not tell.
const std::wstring& OwnUserSid();

/// The SID of another process's user; empty when the system does not tell.
std::wstring UserSidOf(HANDLE process);

} // namespace Kestrany::Agent

#endif
