#ifndef AGENT_PLUGIN_PRODUCTSETTINGS_H
#define AGENT_PLUGIN_PRODUCTSETTINGS_H

#include <optional>
#include <string>

#include "orlindex/IdErrorCode.h"

namespace Kestrany::Agent {

/// What a host set for its product. Texts are UTF-8; one that was never set is empty.
struct ProductSettings
{
    std::string clientId;
    std::string tokenScope;
    std::string lineName;
    std::string releaseId;
    std::string buildId;

    friend bool operator==(const ProductSettings& left, const ProductSettings& right)
    {
        return left.clientId == right.clientId && left.tokenScope == right.tokenScope &&
               left.lineName == right.lineName && left.releaseId == right.releaseId && left.buildId == right.buildId;
    }
};

/// A product configuration and its server.
struct ServerProduct
{
    Server server = TALIX_SERVER_UNAVAILABLE;
    ProductSettings product;
};

/// Returns an object with the member "server", a server's name, and one text member for each text that is not empty:
/// "clientId", "tokenScope", "productLine", "releaseId", "buildId". Empty for a value that names no server.
std::string ProductToJson(const ServerProduct& product);

/// Parses that form. nullopt for any other text: no object, an unknown server, a member of another type or name.
std::optional<ServerProduct> ProductFromJson(const std::string& json);

} // namespace Kestrany::Agent

#endif
