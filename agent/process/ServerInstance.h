#ifndef AGENT_PROCESS_SERVERINSTANCE_H
#define AGENT_PROCESS_SERVERINSTANCE_H

#include <optional>
#include <string>

#include "platform/Handle.h"

namespace Kestrany::Agent {

/// Identity name of a server application that was told no other.
inline constexpr char DefaultIdentity[] = "Kestrany.TALIX.DefaultProcess-v2";

/// Whether `identity` can name kernel objects and stand in a command line: 1 to 120 of A-Z a-z 0-9 . _ -
bool IsValidIdentity(const std::string& identity);

/// Manual-reset event that is set while the server of this identity serves.
std::wstring ReadyEventName(const std::string& identity);
/// Mutex of those who start a server of this identity.
std::wstring StartMutexName(const std::string& identity);
/// Manual-reset event that asks one server process to quit.
std::wstring QuitEventName(DWORD processId);
/// Manual-reset event that is set while one server process is frozen.
std::wstring FrozenEventName(DWORD processId);
/// Manual-reset event that asks one server process that is frozen to go on.
std::wstring ThawEventName(DWORD processId);

/// Process of the server that runs under `identity` in this user's session, if any.
std::optional<DWORD> FindServer(const std::string& identity);
/// Whether it serves already.
bool IsServerReady(const std::string& identity);

/// The server process's own entry: while the object lives, the process is the one that runs under its identity.
class ServerInstance
{
public:
    enum class Outcome
    {
        Claimed,
        TakenByAnother,
        Failed ///< GetLastError tells why.
    };

    explicit ServerInstance(const std::string& identity);
    ~ServerInstance();
    ServerInstance(const ServerInstance&) = delete;
    ServerInstance& operator=(const ServerInstance&) = delete;

    Outcome Claim();
    void SetReady() const { SetEvent(ready_.get()); }
    /// A server that is about to end: who starts one waits for its end.
    void ResetReady() const { ResetEvent(ready_.get()); }
    /// Set when the process is asked to quit.
    HANDLE QuitEvent() const { return quit_.get(); }

private:
    std::string identity_;
    Handle mutex_;
    Handle section_;
    Handle ready_;
    Handle quit_;
    bool claimed_ = false;
};

} // namespace Kestrany::Agent

#endif
