#include "session/ServerNames.h"

namespace Kestrany::Agent {

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

} // namespace Kestrany::Agent
