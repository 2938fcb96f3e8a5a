// The configuration of OpenID Connect providers, which administrators write.

#include <cstdint>
#include <string>

#include "Require.h"
#include "identity/openid/ProviderConfig.h"
#include "identity/openid/Url.h"

using namespace Kestrany::Agent::OpenId;
using OrlindexTest::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string problem;
    const auto configs = ReadProviderConfigs(std::string(data, data + size), "a.json", problem);
    Require(configs.has_value() == problem.empty(), "there is a problem exactly where there is no configuration");
    if (!configs)
    {
        Require(problem.rfind("a.json:", 0) == 0, "a problem begins with its place");
        return 0;
    }
    Require(!configs->servers.empty(), "there is a server");
    for (const auto& [server, config] : configs->servers)
    {
        const auto url = ParseUrl(config.issuer);
        Require(url && IsTrustworthy(*url, config.allowInsecureLoopback), "an issuer is trustworthy");
        Require(url->isHttps || IsLoopbackHost(url->host), "http is for this machine only");
        Require(IsLoopbackHost(config.redirectHost), "a redirect goes to this machine");
        Require(config.redirectPath.front() == '/', "a path begins with a slash");
        Require(config.additionalParameters.count("redirect_uri") == 0 &&
                    config.additionalParameters.count("state") == 0,
                "reserved parameters stay the agent's");
        Require(config.signInLimit.count() >= 10 && config.requestLimit.count() >= 1, "times are in their range");
    }
    return 0;
}
