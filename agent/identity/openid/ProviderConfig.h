#ifndef AGENT_IDENTITY_OPENID_PROVIDERCONFIG_H
#define AGENT_IDENTITY_OPENID_PROVIDERCONFIG_H

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "orlindex/IdErrorCode.h"

namespace Kestrany::Agent::OpenId {

/// How users sign in.
enum class SignInMethod
{
    Browser, ///< In the browser of this machine, which is redirected to a listener of the server application.
    Device   ///< On another device, with a code that this machine shows.
};

/// The provider of one server.
struct ProviderConfig
{
    std::string issuer;
    bool allowInsecureLoopback = false; ///< The issuer is on this machine, and http is allowed.
    bool assumePkce = false;            ///< The provider supports PKCE without listing it.
    std::string redirectHost = "127.0.0.1";
    std::vector<std::uint16_t> redirectPorts; ///< Empty for any free one.
    std::string redirectPath = "/callback";
    SignInMethod signIn = SignInMethod::Browser;
    std::map<std::string, std::string> additionalParameters; ///< Of the authorization request.
    std::chrono::seconds signInLimit{300};
    std::chrono::seconds requestLimit{10};
    std::chrono::seconds clockTolerance{60};
};

/// The configuration of the OpenID Connect source.
struct ProviderConfigs
{
    std::map<Server, ProviderConfig> servers;
    bool window = true; ///< Whether a window is shown while a user is expected.
};

/// Parses the JSON form of docs/schema/provider-config.schema.json. nullopt if the text is anything else; `problem` is
/// then file, line, column, key and cause, and what is allowed there. `file` is for that message alone.
std::optional<ProviderConfigs> ReadProviderConfigs(const std::string& contents, const std::string& file,
                                                   std::string& problem);

} // namespace Kestrany::Agent::OpenId

#endif
