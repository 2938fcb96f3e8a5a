#ifndef AGENT_SESSION_PRODUCTSETTINGS_H
#define AGENT_SESSION_PRODUCTSETTINGS_H

#include <string>

namespace Kestrany::Agent {

/// What a host said about its product. Texts are UTF-8; one that was never set is empty.
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

} // namespace Kestrany::Agent

#endif
