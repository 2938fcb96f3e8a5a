#include "identity/openid/ProviderConfig.h"

#include <algorithm>

#include "identity/ConfigurationWalk.h"
#include "identity/LoginService.h"
#include "identity/openid/Url.h"

namespace Kestrany::Agent::OpenId {

namespace {

constexpr std::size_t MaxPorts = 32;
constexpr std::size_t MaxParameters = 16;
constexpr std::size_t MaxPath = 256;
constexpr std::size_t MaxParameterName = 64;

bool IsUnreserved(char letter, const char* further)
{
    return (letter >= '0' && letter <= '9') || (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
           std::string(further).find(letter) != std::string::npos;
}

bool HoldsOnly(const std::string& text, const char* further)
{
    return std::all_of(text.begin(), text.end(), [&](char letter) { return IsUnreserved(letter, further); });
}

/// Parameters that the agent sets, or whose effect it would have to check.
const std::vector<std::string>& ReservedParameters()
{
    static const std::vector<std::string> names = {"client_assertion",
                                                   "client_assertion_type",
                                                   "client_id",
                                                   "client_secret",
                                                   "code",
                                                   "code_challenge",
                                                   "code_challenge_method",
                                                   "code_verifier",
                                                   "device_code",
                                                   "grant_type",
                                                   "max_age",
                                                   "nonce",
                                                   "redirect_uri",
                                                   "refresh_token",
                                                   "request",
                                                   "request_uri",
                                                   "response_mode",
                                                   "response_type",
                                                   "scope",
                                                   "state"};
    return names;
}

/// Walks through the document. Throws ConfigurationError at the first error.
class ProviderWalk : ConfigurationWalk
{
public:
    using ConfigurationWalk::ConfigurationWalk;

    ProviderConfigs Read(const Json::Value& root) const
    {
        RequireObject(root, "the configuration");
        AllowKeys(root, "", {"$schema", "servers", "window"});
        if (const Json::Value* schema = Find(root, "$schema"))
            Text(*schema, "$schema", 0);
        ProviderConfigs configs;
        if (const Json::Value* window = Find(root, "window"))
            configs.window = Boolean(*window, "window");
        const Json::Value& servers = Need(root, "the configuration", "servers");
        RequireObject(servers, "servers");
        Names names;
        for (const Server server : Servers)
            names.push_back(ServerName(server));
        AllowKeys(servers, "servers", names);
        if (servers.empty())
            Fail(servers, "servers", "must hold at least one server");
        for (const std::string& name : servers.getMemberNames())
            configs.servers[ServerOfName(name)] = OneServer(servers[name], Join("servers", name));
        return configs;
    }

private:
    ProviderConfig OneServer(const Json::Value& value, const std::string& path) const
    {
        RequireObject(value, path);
        AllowKeys(value, path,
                  {"issuer", "allowInsecureLoopback", "assumePkce", "redirectHost", "redirectPorts", "redirectPath",
                   "signIn", "additionalParameters", "timeouts", "clockToleranceSeconds"});
        ProviderConfig config;
        if (const Json::Value* allow = Find(value, "allowInsecureLoopback"))
            config.allowInsecureLoopback = Boolean(*allow, Join(path, "allowInsecureLoopback"));
        if (const Json::Value* assume = Find(value, "assumePkce"))
            config.assumePkce = Boolean(*assume, Join(path, "assumePkce"));
        config.issuer = Issuer(Need(value, path, "issuer"), Join(path, "issuer"), config.allowInsecureLoopback);
        if (const Json::Value* host = Find(value, "redirectHost"))
            config.redirectHost = Choice(*host, Join(path, "redirectHost"), {"127.0.0.1", "[::1]", "localhost"});
        if (const Json::Value* ports = Find(value, "redirectPorts"))
            config.redirectPorts = Ports(*ports, Join(path, "redirectPorts"));
        if (const Json::Value* redirectPath = Find(value, "redirectPath"))
            config.redirectPath = RedirectPath(*redirectPath, Join(path, "redirectPath"));
        if (const Json::Value* signIn = Find(value, "signIn"))
            config.signIn = Choice(*signIn, Join(path, "signIn"), {"browser", "device"}) == "device"
                                ? SignInMethod::Device
                                : SignInMethod::Browser;
        if (const Json::Value* parameters = Find(value, "additionalParameters"))
            config.additionalParameters = Parameters(*parameters, Join(path, "additionalParameters"));
        if (const Json::Value* timeouts = Find(value, "timeouts"))
            ReadTimeouts(*timeouts, Join(path, "timeouts"), config);
        TakeSeconds(value, path, "clockToleranceSeconds", 0, 600, config.clockTolerance);
        return config;
    }

    static std::string Issuer(const Json::Value& value, const std::string& path, bool allowInsecureLoopback)
    {
        const std::string issuer = Text(value, path, 1);
        const std::optional<Url> url = ParseUrl(issuer);
        if (!url || url->query)
            Fail(value, path, "must be an address such as https://login.example.com, without a query and a fragment");
        if (IsTrustworthy(*url, allowInsecureLoopback))
            return issuer;
        if (IsLoopbackHost(url->host))
            Fail(value, path,
                 "must begin with https://; for tests on this machine, set \"allowInsecureLoopback\" to true");
        Fail(value, path, "must begin with https://");
    }

    static std::vector<std::uint16_t> Ports(const Json::Value& value, const std::string& path)
    {
        RequireArray(value, path);
        if (value.size() > MaxPorts)
            Fail(value, path, "must hold at most " + std::to_string(MaxPorts) + " ports");
        std::vector<std::uint16_t> ports;
        for (Json::ArrayIndex index = 0; index < value.size(); ++index)
        {
            const auto port = static_cast<std::uint16_t>(Integer(value[index], Join(path, index), 1, 65'535));
            if (std::find(ports.begin(), ports.end(), port) != ports.end())
                Fail(value[index], Join(path, index), "is there twice");
            ports.push_back(port);
        }
        return ports;
    }

    static std::string RedirectPath(const Json::Value& value, const std::string& path)
    {
        const std::string text = Text(value, path, 1);
        if (text.front() != '/' || text.size() > MaxPath || !HoldsOnly(text, "-._~/"))
            Fail(value, path,
                 "must begin with \"/\" and hold at most " + std::to_string(MaxPath) +
                     " letters, digits and the characters - . _ ~ /");
        return text;
    }

    std::map<std::string, std::string> Parameters(const Json::Value& value, const std::string& path) const
    {
        RequireObject(value, path);
        if (value.size() > MaxParameters)
            Fail(value, path, "must hold at most " + std::to_string(MaxParameters) + " parameters");
        std::map<std::string, std::string> parameters;
        const std::vector<std::string>& reserved = ReservedParameters();
        for (const std::string& name : value.getMemberNames())
        {
            const std::string key = Join(path, name);
            if (name.empty() || name.size() > MaxParameterName || !HoldsOnly(name, "-._~"))
                Fail(KeyOffset(value[name], name), key, "must be a name of letters, digits and the characters - . _ ~");
            if (std::find(reserved.begin(), reserved.end(), name) != reserved.end())
                Fail(KeyOffset(value[name], name), key, "is reserved for the agent");
            parameters[name] = Text(value[name], key, 0);
        }
        return parameters;
    }

    void ReadTimeouts(const Json::Value& value, const std::string& path, ProviderConfig& config) const
    {
        RequireObject(value, path);
        AllowKeys(value, path, {"signInSeconds", "requestSeconds"});
        TakeSeconds(value, path, "signInSeconds", 10, 840, config.signInLimit);
        TakeSeconds(value, path, "requestSeconds", 1, 60, config.requestLimit);
    }
};

} // namespace

std::optional<ProviderConfigs> ReadProviderConfigs(const std::string& contents, const std::string& file,
                                                   std::string& problem)
{
    return ReadConfiguration<ProviderConfigs>(
        contents, file, problem,
        [](const std::string& text, const Json::Value& root) { return ProviderWalk(text).Read(root); });
}

} // namespace Kestrany::Agent::OpenId
