#ifndef AGENT_IDENTITY_SIMULATED_SCENARIO_H
#define AGENT_IDENTITY_SIMULATED_SCENARIO_H

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "identity/IdentitySource.h"

namespace Kestrany::Agent::Simulated {

/// What a login does that names no user.
enum class LoginBehavior
{
    Accept,
    Refuse,
    Cancel,
    Wait ///< As with a user who does nothing: until the time is over, or the login is cancelled.
};

/// The users of a scenario that names none. The first one signs in if a login names no user.
std::vector<Account> DefaultAccounts();

/// How the simulated identity service behaves. The defaults hold without a scenario file.
struct Scenario
{
    bool isValid = true; ///< False in place of a scenario file that is wrong: nobody can sign in.
    std::vector<Account> users = DefaultAccounts();
    LoginBehavior login = LoginBehavior::Accept;
    std::string loginUser; ///< User name of who signs in; the first user if empty.
    std::chrono::seconds loginWait{60};
    std::chrono::seconds loginLifetime{14 * 24 * 3600};
    std::chrono::seconds tokenLifetime{3600};
    std::chrono::milliseconds latency{0}; ///< Before each response.
    Features features{true, true};
    std::vector<Fault> faults;
};

/// The operations that faults may name.
const std::vector<std::string>& FaultyOperations();

/// Parses the JSON form of docs/schema/simulator-scenario.schema.json. nullopt if the text is anything else; `problem`
/// is then file, line, column, key and cause, and what is allowed there. `file` is for that message alone.
std::optional<Scenario> ReadScenario(const std::string& contents, const std::string& file, std::string& problem);

} // namespace Kestrany::Agent::Simulated

#endif
