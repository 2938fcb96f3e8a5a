#ifndef ORLINDEX_LOCATE_CLIENTCONFIGDOCUMENT_H
#define ORLINDEX_LOCATE_CLIENTCONFIGDOCUMENT_H

#include <optional>
#include <string>
#include <vector>

#include "base/JsonDocument.h"

namespace Kestrany::IdentityServices {

/// What the object "ssoServer" of a client config file says. Texts are UTF-8, and empty where the file has none.
struct ClientConfigValues
{
    std::string bundleId;
    std::string versionCompatibilityConfigFilePath;
    std::string searchPaths; ///< Directories separated by ";".
    bool supportBothLocalAndAdmin = false;
};

/// A key that was looked for.
struct ClientConfigKey
{
    std::string name;
    bool present;
    bool rightType;
};

/// How a client config file was read.
struct ClientConfigReading
{
    JsonError error;                   ///< Of a text that is no JSON.
    std::vector<ClientConfigKey> keys; ///< "ssoServer", then those below it.
};

/// Nothing for a text that is no JSON. A key whose value has another type counts as missing. Fills how it was read,
/// where asked to.
std::optional<ClientConfigValues> ReadClientConfigDocument(const std::string& bytes,
                                                           ClientConfigReading* reading = nullptr);

} // namespace Kestrany::IdentityServices

#endif
