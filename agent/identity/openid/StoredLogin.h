#ifndef AGENT_IDENTITY_OPENID_STOREDLOGIN_H
#define AGENT_IDENTITY_OPENID_STOREDLOGIN_H

#include <optional>
#include <string>
#include <vector>

#include <json/value.h>

#include "identity/LoginService.h"
#include "identity/openid/Secret.h"
#include "identity/openid/Services.h"

namespace Kestrany::Agent::OpenId {

/// The login of one product: its user and its tokens. Each product has a user of its own, because a provider may tell
/// each product another subject for the same person. Times are whole seconds.
struct ClientLogin
{
    std::string clientId;
    std::string scope; ///< That the product asked for.
    Secret accessToken;
    TimePoint accessExpiry;
    Secret idToken;
    TimePoint idExpiry;
    Secret refreshToken; ///< Empty if the provider issued none.
    std::string nonce;   ///< Of the request that signed the user in; empty after a device grant.
    std::string subject;
    Json::Value claims{Json::objectValue}; ///< About the user.
    bool hasUserInfo = false;              ///< The claims are completed by the userinfo endpoint.
};

/// The logins of one server as they are stored beyond the process.
struct StoredLogin
{
    std::vector<ClientLogin> clients;
};

/// Whose login it is. It is restored for its own identity, server and issuer only: otherwise a changed configuration
/// would send the tokens of one provider to another.
struct StoredLoginOrigin
{
    std::string identity; ///< Identity name of the server application.
    Server server;
    std::string issuer;
};

/// Writes the login as a text that names its origin. The text has to be protected.
Secret WriteStoredLogin(const StoredLogin& login, const StoredLoginOrigin& origin);

/// Parses that text. nullopt for any other text and for another origin; `problem` then says which.
std::optional<StoredLogin> ReadStoredLogin(Secret text, const StoredLoginOrigin& origin, std::string& problem);

/// Where logins are kept beyond the process.
class LoginStore
{
public:
    virtual ~LoginStore() = default;
    /// True once the text, or that there is none, outlives this process. The store protects what it writes.
    virtual bool Save(Server server, const Secret* text) = 0;
    /// nullopt if there is no text, or one that this user did not protect on this machine.
    virtual std::optional<Secret> Load(Server server) = 0;
};

} // namespace Kestrany::Agent::OpenId

#endif
