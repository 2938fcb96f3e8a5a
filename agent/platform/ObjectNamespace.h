#ifndef AGENT_PLATFORM_OBJECTNAMESPACE_H
#define AGENT_PLATFORM_OBJECTNAMESPACE_H

#include <string>

#include <windows.h>

namespace Kestrany::Agent {

// Names of pipes and kernel objects. Processes of one user and one settings folder have the same ones, others do not.
// All of these throw std::runtime_error if the user cannot be determined.

/// What the names begin with.
const std::wstring& ObjectNamespace();

/// A name in this logon session: `kind` says what the object is for.
std::wstring SessionObjectName(const std::string& kind);

// --- Identities -----------------------------------------------------------------------------------------------------

/// Identity name of a server process that was given no other.
inline constexpr char DefaultIdentity[] = "Kestrany.TALIX.DefaultProcess-v2";

/// Whether `identity` can name kernel objects and stand in a command line: 1 to 120 of A-Z a-z 0-9 . _ -
bool IsValidIdentity(const std::string& identity);

/// Pipe on which the server process of an identity accepts hosts. A pipe's name is the machine's, not the session's.
std::wstring HostPipeName(const std::string& identity);
/// Manual-reset event that is set while the server process of an identity accepts hosts.
std::wstring ReadyEventName(const std::string& identity);
/// Mutex of those who start a server process of an identity.
std::wstring StartMutexName(const std::string& identity);

// --- Server processes -----------------------------------------------------------------------------------------------

/// Pipe on which one server process accepts requests of tools.
std::wstring ProcessPipeName(DWORD processId);
/// Manual-reset event that asks one server process to quit.
std::wstring QuitEventName(DWORD processId);
/// Manual-reset event that is set while one server process is frozen.
std::wstring FrozenEventName(DWORD processId);
/// Manual-reset event that thaws one frozen server process.
std::wstring ThawEventName(DWORD processId);

} // namespace Kestrany::Agent

#endif
