#ifndef AGENT_SESSION_PRODUCTJSON_H
#define AGENT_SESSION_PRODUCTJSON_H

#include <optional>
#include <string>

#include "orlindex/IdErrorCode.h"
#include "session/ProductSettings.h"

namespace Kestrany::Agent {

/// A product configuration and the server that it is for.
struct ServerProduct
{
    Server server = TALIX_SERVER_UNAVAILABLE;
    ProductSettings product;
};

/// An object with the member "server", a server's name, and one text member for each text that is not empty:
/// "clientId", "tokenScope", "productLine", "releaseId", "buildId". Empty for a value that names no server.
std::string ProductToJson(const ServerProduct& product);

/// Reads that form. Nothing where it is not that: no object, a server that does not exist, a member of another type or
/// of another name.
std::optional<ServerProduct> ProductFromJson(const std::string& json);

} // namespace Kestrany::Agent

#endif
