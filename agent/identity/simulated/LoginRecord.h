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

/// A login as it is kept beyond the process that made it. Times are whole seconds there.
struct LoginRecord
{
    std::string userId;
    TimePoint expiry;
    std::vector<ClientTokens> clients;
};

/// Whose record it is: a login is restored only where it was made for.
struct LoginOrigin
{
    std::string identity; ///< Identity name of the server application.
    Server server;
};

/// The record as a text that names its origin.
std::string WriteLoginRecord(const LoginRecord& record, const LoginOrigin& origin);

/// Reads that text. Nothing where it is not one, or one of another origin; `problem` then says which.
std::optional<LoginRecord> ReadLoginRecord(const std::string& text, const LoginOrigin& origin, std::string& problem);

} // namespace Kestrany::Agent::Simulated

#endif
