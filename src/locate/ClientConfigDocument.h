#ifndef ORLINDEX_LOCATE_CLIENTCONFIGDOCUMENT_H
#define ORLINDEX_LOCATE_CLIENTCONFIGDOCUMENT_H

#include <optional>
#include <string>

namespace Kestrany::IdentityServices {

/// What the object "ssoServer" of a client config file says. Texts are UTF-8, and empty where the file has none.
struct ClientConfigValues
{
    std::string bundleId;
    std::string versionCompatibilityConfigFilePath;
    std::string searchPaths; ///< Directories separated by ";".
    bool supportBothLocalAndAdmin = false;
};

/// Nothing for a text that is no JSON. A key whose value has another type counts as missing.
std::optional<ClientConfigValues> ReadClientConfigDocument(const std::string& bytes);

} // namespace Kestrany::IdentityServices

#endif
