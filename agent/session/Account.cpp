#include "session/Account.h"

#include "session/Json.h"

namespace Kestrany::Agent {

std::vector<Account> DefaultAccounts()
{
    Account sam;
    sam.userId = "simulator-0001";
    sam.userName = "sam.example@simulator";
    sam.firstName = "Sam";
    sam.lastName = "Example";
    sam.email = "sam.example@simulator.invalid";
    sam.displayName = "Sam Example (simulator)";
    sam.secret = "simulator";
    return {sam};
}

std::string ProfileJson(const Account& account)
{
    Json::Value profile = account.profile;
    profile["userId"] = account.userId;
    profile["userName"] = account.userName;
    profile["firstName"] = account.firstName;
    profile["lastName"] = account.lastName;
    profile["email"] = account.email;
    profile["displayName"] = account.displayName;
    profile["source"] = "simulator";
    return WriteJson(profile);
}

} // namespace Kestrany::Agent
