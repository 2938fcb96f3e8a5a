#ifndef AGENT_IDENTITY_OPENID_WINDOWS_PROVIDERCONFIGFILE_H
#define AGENT_IDENTITY_OPENID_WINDOWS_PROVIDERCONFIGFILE_H

#include <optional>
#include <string>

#include "identity/openid/ProviderConfig.h"

namespace Kestrany::Agent::OpenId {

/// What a configuration file says.
struct ProviderConfigChoice
{
    std::wstring file;
    bool exists = false; ///< Also for a file that cannot be read.
    std::optional<ProviderConfigs> configs;
    std::string problem; ///< Why there are no configurations, although the file exists.
};

/// Reads Pellwick.config.json beside this process's executable.
ProviderConfigChoice ReadProviderConfigFile();

} // namespace Kestrany::Agent::OpenId

#endif
