#ifndef SIMULATOR_PLATFORM_USER_H
#define SIMULATOR_PLATFORM_USER_H

#include <string>

#include <windows.h>

namespace Kestrany::Simulator {

/// The SID of this process's user as text (S-1-...). Throws std::runtime_error when the system does not tell.
const std::wstring& OwnUserSid();

/// The SID of another process's user; empty when the system does not tell.
std::wstring UserSidOf(HANDLE process);

} // namespace Kestrany::Simulator

#endif
