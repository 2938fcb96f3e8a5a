#include "identity/LoginService.h"

#include <cstring>

#include "identity/Json.h"

namespace Kestrany::Agent {

namespace {

bool HasHostAfter(const std::string& address, const char* scheme)
{
    const std::size_t length = std::strlen(scheme);
    return address.compare(0, length, scheme) == 0 && address.size() > length && address[length] != '/';
}

} // namespace

std::string ServerName(Server server)
{
    switch (server)
    {
    case TALIX_SERVER_PRODUCTION:
        return "production";
    case TALIX_SERVER_STAGING:
        return "staging";
    case TALIX_SERVER_DEVELOPMENT:
        return "development";
    default:
        return {};
    }
}

Server ServerOfName(const std::string& name)
{
    for (const Server server : Servers)
    {
        if (ServerName(server) == name)
            return server;
    }
    return TALIX_SERVER_UNAVAILABLE;
}

bool IsWebAddress(const std::string& address)
{
    return HasHostAfter(address, "https://") || HasHostAfter(address, "http://");
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
    return WriteJson(profile);
}

} // namespace Kestrany::Agent
