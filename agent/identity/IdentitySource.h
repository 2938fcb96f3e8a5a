#ifndef AGENT_IDENTITY_IDENTITYSOURCE_H
#define AGENT_IDENTITY_IDENTITYSOURCE_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "identity/LoginService.h"

namespace Kestrany::Agent {

// What a source of identity implements. It is called on the one thread of the server process.

/// Names of the operations, in messages and in faults.
namespace Operations {
inline constexpr char Attach[] = "attach";
inline constexpr char Login[] = "login";
inline constexpr char AutomatedLogin[] = "automatedLogin";
inline constexpr char Logout[] = "logout";
inline constexpr char CancelLogin[] = "cancelLogin";
inline constexpr char GetStatus[] = "getStatus";
inline constexpr char GetUser[] = "getUser";
inline constexpr char GetAccessToken[] = "getAccessToken";
inline constexpr char GetIdToken[] = "getIdToken";
inline constexpr char RefreshToken[] = "refreshToken";
inline constexpr char GetSessionUri[] = "getSessionUri";
inline constexpr char Restore[] = "restore";
inline constexpr char GetFeatures[] = "getFeatures";
} // namespace Operations

struct LoginResult
{
    IdErrorCode code = IdFailed;
    LoginDetail detail = LoginDetail::NotLoggedIn;
};

/// A login that waits for its user.
class PendingLogin
{
public:
    virtual ~PendingLogin() = default;
    /// The result; nullopt while the login waits. Not called again after a result.
    virtual std::optional<LoginResult> Poll() = 0;
    /// When Poll returns a result at the latest, in the process's ticks (milliseconds).
    virtual std::int64_t Limit() const = 0;
};

/// Work that an operation waits for, such as a request to a provider. The work goes on without the object.
class PendingWork
{
public:
    virtual ~PendingWork() = default;
    /// nullopt while the work goes on. Not called again after a result.
    virtual std::optional<IdErrorCode> Poll() = 0;
    /// Whether the work is the whole operation, whose result is then that of the work. Else the operation is performed
    /// after IdSuccess, and another code is its result.
    virtual bool IsWholeOperation() const = 0;
    /// When Poll returns a result at the latest, in the process's ticks (milliseconds).
    virtual std::int64_t Limit() const = 0;
};

/// The logins of one server identity.
class SourceLogins : public LoginService
{
public:
    /// Whether somebody is signed in at the server, and the login has not expired.
    virtual bool IsValid(Server server) const = 0;
    /// Begins a login that waits for its user. Null if Login has the result at once.
    virtual std::unique_ptr<PendingLogin> BeginLogin(const Caller& caller) = 0;
    /// Begins what an operation other than Login waits for. Null if it can be performed at once. `flag`: the one of
    /// GetAccessToken and RefreshToken, else false.
    virtual std::unique_ptr<PendingWork> Prepare(const std::string& operation, const Caller& caller, bool flag)
    {
        (void)operation, (void)caller, (void)flag;
        return nullptr;
    }
};

/// Optional operations that a source offers.
struct Features
{
    bool idToken = false;
    bool loginMode = false;
};

/// What happens in place of an operation.
enum class FaultEffect
{
    Result, ///< It does nothing and returns a code.
    Crash,  ///< The server process ends at once.
    Hang    ///< It never gets a response.
};

/// A failure that a source injects, so that hosts can be tested against it.
struct Fault
{
    std::string operation;
    unsigned int call = 1; ///< Counted from 1, since the server started.
    bool onwards = false;  ///< That call and all later ones.
    FaultEffect effect = FaultEffect::Result;
    IdErrorCode result = IdFailed;
};

/// Where users, logins and tokens come from.
class IdentitySource
{
public:
    /// Receives every event after it was stored, and before the operation that caused it returns.
    using EventSink = std::function<void(const std::string& identity, const LoginEvent& event)>;

    virtual ~IdentitySource() = default;

    /// Called once, before FindLogins.
    virtual void Subscribe(EventSink sink) = 0;
    /// The logins of a server identity, restored from their storage by the first call. Null for an invalid name, if
    /// another process holds the logins, and if there are too many identities.
    virtual SourceLogins* FindLogins(const std::string& identity) = 0;
    virtual Features OfferedFeatures() const = 0;

    /// Counts a call of an operation. Returns the fault to inject, null for none.
    virtual const Fault* NextFault(const std::string& operation)
    {
        (void)operation;
        return nullptr;
    }
    /// How long every response is held back.
    virtual std::chrono::milliseconds Latency() const { return {}; }

    /// Does what is due by now, and what the source's other threads left to the process's thread.
    virtual void RunTimers() {}
    /// When RunTimers has something to do, in ticks; nullopt if nothing is pending.
    virtual std::optional<std::int64_t> NextTimer() const { return std::nullopt; }
    /// Ends all work, at the end of the process. False if a thread still runs: it then ends with the process, and must
    /// not meet destroyed objects.
    virtual bool Shutdown() { return true; }
};

} // namespace Kestrany::Agent

#endif
