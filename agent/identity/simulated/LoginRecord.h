#ifndef AGENT_IDENTITY_SIMULATED_LOGINRECORD_H
#define AGENT_IDENTITY_SIMULATED_LOGINRECORD_H

#include <optional>
#include <string>
#include <vector>

#include "identity/simulated/Token.h"
#include "orlindex/IdErrorCode.h"

namespace Kestrany::Agent::Simulated {

/// The tokens of one product.
struct ClientTokens
{
    std::string clientId;
    std::string scope;
    Token access;
    Token id;
};

/// A login as it is stored beyond the process. Times are whole seconds.
struct LoginRecord
{
    std::string userId;
    TimePoint expiry;
    std::vector<ClientTokens> clients;
};

/// Whose record it is: a login is restored only for its own identity and server.
struct LoginOrigin
{
    std::string identity; ///< Identity name of the server application.
    Server server;
};

/// Writes the record as a text that names its origin.
std::string WriteLoginRecord(const LoginRecord& record, const LoginOrigin& origin);

/// Parses that text. nullopt for any other text and for another origin; `problem` then says which.
std::optional<LoginRecord> ReadLoginRecord(const std::string& text, const LoginOrigin& origin, std::string& problem);

} // namespace Kestrany::Agent::Simulated

#endif
