#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "identity/openid/ProviderConfig.h"

namespace Kestrany::Agent::OpenId {

namespace {

std::string ProblemOf(const std::string& text)
{
    std::string problem;
    EXPECT_FALSE(ReadProviderConfigs(text, "a.json", problem)) << text;
    return problem;
}

/// The problem of a configuration whose one server has these members besides a good issuer.
std::string ProblemWith(const std::string& members)
{
    return ProblemOf(R"({"servers":{"production":{"issuer":"https://a.example.com",)" + members + "}}}");
}

bool Holds(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

TEST(ProviderConfigTest, AnIssuerIsEnough)
{
    std::string problem;
    const std::optional<ProviderConfigs> configs = ReadProviderConfigs(
        R"({ "servers": { "production": { "issuer": "https://login.example.com/realms/main" } } })", "a.json", problem);
    ASSERT_TRUE(configs) << problem;
    EXPECT_TRUE(configs->window);
    ASSERT_EQ(configs->servers.size(), 1u);
    const ProviderConfig& config = configs->servers.at(TALIX_SERVER_PRODUCTION);
    EXPECT_EQ(config.issuer, "https://login.example.com/realms/main");
    EXPECT_FALSE(config.allowInsecureLoopback);
    EXPECT_FALSE(config.assumePkce);
    EXPECT_EQ(config.redirectHost, "127.0.0.1");
    EXPECT_TRUE(config.redirectPorts.empty());
    EXPECT_EQ(config.redirectPath, "/callback");
    EXPECT_EQ(config.signIn, SignInMethod::Browser);
    EXPECT_EQ(config.signInLimit, std::chrono::minutes(5));
    EXPECT_EQ(config.requestLimit, std::chrono::seconds(10));
    EXPECT_EQ(config.clockTolerance, std::chrono::seconds(60));
}

TEST(ProviderConfigTest, EveryKeyIsRead)
{
    std::string problem;
    const std::optional<ProviderConfigs> configs = ReadProviderConfigs(R"({
        "$schema": "s",
        "window": false,
        "servers": {
            "staging": { "issuer": "https://b.example.com" },
            "development": {
                "issuer": "http://localhost:3000",
                "allowInsecureLoopback": true,
                "assumePkce": true,
                "redirectHost": "[::1]",
                "redirectPorts": [4000, 65535],
                "redirectPath": "/a/b",
                "signIn": "device",
                "additionalParameters": { "audience": "https://api.example.com" },
                "timeouts": { "signInSeconds": 60, "requestSeconds": 5 },
                "clockToleranceSeconds": 0
            }
        }
    })",
                                                                       "a.json", problem);
    ASSERT_TRUE(configs) << problem;
    EXPECT_FALSE(configs->window);
    EXPECT_EQ(configs->servers.at(TALIX_SERVER_STAGING).issuer, "https://b.example.com");
    const ProviderConfig& config = configs->servers.at(TALIX_SERVER_DEVELOPMENT);
    EXPECT_EQ(config.issuer, "http://localhost:3000");
    EXPECT_TRUE(config.assumePkce);
    EXPECT_EQ(config.redirectHost, "[::1]");
    EXPECT_EQ(config.redirectPorts, (std::vector<std::uint16_t>{4000, 65'535}));
    EXPECT_EQ(config.redirectPath, "/a/b");
    EXPECT_EQ(config.signIn, SignInMethod::Device);
    EXPECT_EQ(config.additionalParameters.at("audience"), "https://api.example.com");
    EXPECT_EQ(config.signInLimit, std::chrono::seconds(60));
    EXPECT_EQ(config.requestLimit, std::chrono::seconds(5));
    EXPECT_EQ(config.clockTolerance, std::chrono::seconds(0));
}

TEST(ProviderConfigTest, AnUnknownKeyIsAnErrorWithPlaceAndSuggestion)
{
    EXPECT_EQ(ProblemOf("{\n  \"server\": {}\n}"),
              "a.json:2:3: server: unknown key; did you mean \"servers\"? Allowed here: \"$schema\", \"servers\", "
              "\"window\"");
    EXPECT_EQ(ProblemOf("{\"servers\": {\"prodction\": {}}}"),
              "a.json:1:14: servers.prodction: unknown key; did you mean \"production\"? Allowed here: \"production\", "
              "\"staging\", \"development\"");
    EXPECT_TRUE(Holds(ProblemWith("\"redirectPort\":4000"),
                      "servers.production.redirectPort: unknown key; did you mean \"redirectPorts\"?"));
    EXPECT_TRUE(Holds(ProblemWith("\"clientId\":\"a\""), "servers.production.clientId: unknown key"));
    EXPECT_TRUE(
        Holds(ProblemWith("\"timeouts\":{\"signIn\":1}"), "did you mean \"signInSeconds\"?") ||
        Holds(ProblemWith("\"timeouts\":{\"signIn\":1}"), "Allowed here: \"signInSeconds\", \"requestSeconds\""));
}

TEST(ProviderConfigTest, AnIssuerIsTrustworthy)
{
    const auto problemOf = [](const std::string& issuer, const char* further = "") {
        return ProblemOf("{\"servers\":{\"production\":{\"issuer\":\"" + issuer + "\"" + further + "}}}");
    };
    EXPECT_TRUE(Holds(problemOf("http://login.example.com"), "servers.production.issuer: must begin with https://"));
    EXPECT_TRUE(
        Holds(problemOf("http://login.example.com", ",\"allowInsecureLoopback\":true"), "must begin with https://"));
    EXPECT_TRUE(Holds(problemOf("http://127.0.0.1:3000"), "set \"allowInsecureLoopback\" to true"));
    EXPECT_TRUE(Holds(problemOf("http://127.0.0.1.example.com", ",\"allowInsecureLoopback\":true"),
                      "must begin with https://"));
    for (const char* const issuer : {"login.example.com", "https://a/?b", "https://a/#b", "https://u@a/", "ftp://a"})
        EXPECT_TRUE(Holds(problemOf(issuer), "must be an address such as")) << issuer;
    EXPECT_TRUE(Holds(ProblemOf(R"({"servers":{"production":{}}})"), "the key \"issuer\" is missing"));
}

TEST(ProviderConfigTest, EveryValueHasItsRange)
{
    EXPECT_TRUE(Holds(ProblemOf("{}"), "the key \"servers\" is missing"));
    EXPECT_TRUE(Holds(ProblemOf("{\"servers\":{}}"), "must hold at least one server"));
    EXPECT_TRUE(Holds(ProblemOf("{\"servers\":[]}"), "must be an object"));
    EXPECT_TRUE(Holds(ProblemWith("\"allowInsecureLoopback\":1"), "must be true or false"));
    EXPECT_TRUE(
        Holds(ProblemWith("\"redirectHost\":\"0.0.0.0\""), "must be one of \"127.0.0.1\", \"[::1]\", \"localhost\""));
    EXPECT_TRUE(
        Holds(ProblemWith("\"redirectPorts\":[0]"), "redirectPorts[0]: must be a whole number from 1 to 65535"));
    EXPECT_TRUE(Holds(ProblemWith("\"redirectPorts\":[1,1]"), "redirectPorts[1]: is there twice"));
    EXPECT_TRUE(Holds(ProblemWith("\"redirectPorts\":4000"), "must be an array"));
    for (const char* const path : {"", "callback", "/a?b", "/a b", "/%41", "/\\u00e4", "/a#b"})
        EXPECT_TRUE(Holds(ProblemWith(std::string("\"redirectPath\":\"") + path + "\""), "redirectPath: must be"))
            << path;
    EXPECT_TRUE(Holds(ProblemWith("\"signIn\":\"brwoser\""), "did you mean \"browser\"?"));
    EXPECT_TRUE(Holds(ProblemWith("\"timeouts\":{\"signInSeconds\":9}"), "must be a whole number from 10 to 840"));
    EXPECT_TRUE(Holds(ProblemWith("\"timeouts\":{\"requestSeconds\":61}"), "must be a whole number from 1 to 60"));
    EXPECT_TRUE(Holds(ProblemWith("\"clockToleranceSeconds\":601"), "must be a whole number from 0 to 600"));
}

TEST(ProviderConfigTest, SomeParametersAreReserved)
{
    for (const char* const name : {"client_id", "redirect_uri", "state", "nonce", "code_challenge", "response_type",
                                   "response_mode", "max_age", "request_uri", "scope", "client_secret"})
        EXPECT_TRUE(Holds(ProblemWith(std::string("\"additionalParameters\":{\"") + name + "\":\"a\"}"),
                          std::string("additionalParameters.") + name + ": is reserved for the agent"))
            << name;
    EXPECT_TRUE(Holds(ProblemWith("\"additionalParameters\":{\"a b\":\"c\"}"), "must be a name of letters"));
    EXPECT_TRUE(Holds(ProblemWith("\"additionalParameters\":{\"a\":1}"), "must be a text"));
}

/// Reads the samples with which the schema is tested, too: both must judge alike.
std::size_t ReadSamples(const char* folder, bool areAccepted)
{
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(PROVIDER_SAMPLES) / folder))
    {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        std::string problem;
        EXPECT_EQ(ReadProviderConfigs(text, "a.json", problem).has_value(), areAccepted) << entry.path() << problem;
        ++count;
    }
    return count;
}

TEST(ProviderConfigTest, TheSamplesOfTheSchemaAreReadAsTheSchemaSays)
{
    EXPECT_GE(ReadSamples("accepted", true), 4u);
    EXPECT_GE(ReadSamples("refused", false), 20u);
}

TEST(ProviderConfigTest, ATextThatIsNoJsonHasAPlace)
{
    EXPECT_TRUE(Holds(ProblemOf("{\n\"servers\": }"), "a.json:2:"));
    EXPECT_TRUE(Holds(ProblemOf("\xFF"), "a.json:1:1: not UTF-8"));
}

} // namespace

} // namespace Kestrany::Agent::OpenId
