#ifndef AGENT_SESSION_ACCOUNT_H
#define AGENT_SESSION_ACCOUNT_H

#include <string>
#include <vector>

#include <json/value.h>

namespace Kestrany::Agent {

/// A user that the simulator knows. Texts are UTF-8.
struct Account
{
    std::string userId;
    std::string userName; ///< What the user types to sign in.
    std::string firstName;
    std::string lastName;
    std::string email;
    std::string displayName;
    std::string secret;                     ///< Only the automated login asks for it.
    Json::Value profile{Json::objectValue}; ///< Further members of the profile; they never replace those above.
};

/// The accounts of a simulator that nobody configured. The first one signs in when a login names no user.
std::vector<Account> DefaultAccounts();

/// The account's attributes, without its secret, as a JSON object.
std::string ProfileJson(const Account& account);

} // namespace Kestrany::Agent

#endif
