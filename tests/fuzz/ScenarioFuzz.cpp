// The scenario files that developers write for simulated sign-in.

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>

#include "Require.h"
#include "identity/Json.h"
#include "identity/Utf8.h"
#include "identity/simulated/Scenario.h"

using namespace Kestrany::Agent;
using namespace Kestrany::Agent::Simulated;
using OrlindexTest::Require;

namespace {

bool IsText(const std::string& text)
{
    return WellFormedSize(text) == text.size() && CharacterCount(text) <= 1024 && text.find('\0') == std::string::npos;
}

void RequireUsersGood(const Scenario& scenario)
{
    std::set<std::string> ids;
    std::set<std::string> names;
    for (const Account& user : scenario.users)
    {
        Require(!user.userId.empty() && ids.insert(user.userId).second, "each user has an ID of its own");
        Require(!user.userName.empty() && names.insert(user.userName).second, "each user has a name of its own");
        for (const std::string& text :
             {user.userId, user.userName, user.firstName, user.lastName, user.email, user.displayName, user.secret})
            Require(IsText(text), "a user's texts are short and well formed");
        Require(user.profile.isObject() && WriteJson(user.profile).size() <= 65'536, "a profile fits a message");
    }
    Require(!scenario.users.empty(), "somebody can sign in");
    Require(scenario.loginUser.empty() || names.count(scenario.loginUser) != 0, "who signs in is one of the users");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(data, data + size);
    std::string problem;
    const auto scenario = ReadScenario(text, "a.json", problem);
    Require(scenario.has_value() == problem.empty(), "there is a problem exactly where there is no scenario");
    if (!scenario)
    {
        Require(problem.rfind("a.json:", 0) == 0, "a problem begins with its place");
        return 0;
    }
    RequireUsersGood(*scenario);
    Require(scenario->latency.count() >= 0 && scenario->latency.count() <= 60'000, "a latency is in its range");
    Require(scenario->loginWait.count() >= 1 && scenario->loginWait.count() <= 600, "a wait is in its range");
    Require(scenario->tokenLifetime.count() >= 1, "tokens last for a time");
    for (const Fault& fault : scenario->faults)
    {
        const auto& known = FaultyOperations();
        Require(std::find(known.begin(), known.end(), fault.operation) != known.end(), "a fault has an operation");
        Require(fault.call >= 1, "calls are counted from 1");
    }
    return 0;
}
