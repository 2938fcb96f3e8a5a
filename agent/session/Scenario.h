#ifndef AGENT_SESSION_SCENARIO_H
#define AGENT_SESSION_SCENARIO_H

#include <chrono>
#include <string>
#include <vector>

#include "session/Account.h"
#include "session/ResultCodes.h"

namespace Kestrany::Agent {

/// What a login does that asks for no user.
enum class LoginBehavior
{
    Accept,
    Refuse,
    Cancel,
    Wait ///< As a user who does not type: until the time is over, or the login is cancelled.
};

/// What goes wrong in place of an operation.
enum class FaultEffect
{
    Result, ///< It answers a code and does nothing.
    Crash,  ///< The server ends at once.
    Hang    ///< It is never answered.
};

struct Fault
{
    std::string operation;
    unsigned int call = 1; ///< Counted from 1, since the server started.
    bool onwards = false;  ///< That call and all later ones.
    FaultEffect effect = FaultEffect::Result;
    IdErrorCode result = IdFailed;
};

/// How the simulated identity service behaves. Without a scenario file, as it stands here.
struct Scenario
{
    std::vector<Account> users = DefaultAccounts();
    LoginBehavior login = LoginBehavior::Accept;
    std::string loginUser; ///< User name of who signs in; the first user where it is empty.
    std::chrono::seconds loginWait{60};
    std::chrono::seconds loginLifetime{14 * 24 * 3600};
    std::chrono::seconds tokenLifetime{3600};
    std::chrono::milliseconds latency{0}; ///< Before each answer.
    bool offersIdToken = true;
    bool offersLoginMode = true;
    std::vector<Fault> faults;
};

/// The operations that faults may name.
const std::vector<std::string>& FaultyOperations();

} // namespace Kestrany::Agent

#endif
