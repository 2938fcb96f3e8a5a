#ifndef ORLINDEX_TESTS_AGENT_OPENID_TESTPROVIDER_H
#define ORLINDEX_TESTS_AGENT_OPENID_TESTPROVIDER_H

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <json/value.h>

#include "ReferenceSignatures.h"
#include "identity/openid/Provider.h"

namespace Kestrany::Agent::OpenId {

/// A JSON reply with a status.
HttpReply JsonReply(const Json::Value& body, int status = 200);
/// A reply with any text.
HttpReply TextReply(const std::string& body, const std::string& contentType, int status = 200);
HttpReply ProblemReply(HttpProblem problem);

/// A public key as a member of a key set.
Json::Value KeyAsJson(const TestKey& key, const std::string& keyId);

/// A token in its compact form.
std::string SignedText(const Json::Value& header, const std::string& payload, const TestKey& key,
                       const SigningAlgorithm& algorithm);

/// A provider within the test's process. It is correct until a test changes it: the members are what it sends, and the
/// hooks take the place of a reply.
class TestProvider final : public Http
{
public:
    using Hook = std::function<std::optional<HttpReply>(const HttpRequest&)>;
    using Form = std::map<std::string, std::string>;

    TestProvider();

    HttpReply Send(const HttpRequest& request) override;

    /// The agent's side, with this object as its network. Time passes only when it waits.
    Provider& Agent() { return *agent_; }
    /// A new one, which knows nothing of the provider yet.
    Provider& NewAgent(Backoff backoff = {});
    ProviderParts Parts();

    /// Signs in up to the redirect, and redeems a code. The ID token has the nonce of the request.
    Outcome<Grant> SignIn();

    static constexpr char Issuer[] = "https://login.example.com";
    static constexpr char ClientId[] = "client";
    static constexpr std::int64_t Now = 1'700'000'000;

    ProviderConfig config;
    Json::Value metadata{Json::objectValue};
    Json::Value keys{Json::objectValue};   ///< The key set.
    Json::Value header{Json::objectValue}; ///< Of ID tokens.
    Json::Value claims{Json::objectValue}; ///< Of ID tokens; null members are left out. The nonce is added.
    Json::Value tokens{Json::objectValue}; ///< Of token replies; the ID token is added unless there is one.
    Json::Value userInfo{Json::objectValue};
    const TestKey* key;              ///< Signs ID tokens.
    std::string algorithm = "ES256"; ///< Whose signature is made, whatever the header says.
    std::function<void(std::string& token)> changeIdToken;
    std::map<std::string, Hook> hooks; ///< By the path of the request.

    std::vector<std::string> requested; ///< Paths, in the order of the requests.
    std::vector<Form> forms;            ///< Of POST requests.
    std::vector<std::chrono::milliseconds> pauses;
    std::int64_t ticks = 0;

private:
    std::string IdToken() const;
    HttpReply Reply(const HttpRequest& request, const std::string& path);

    ReferenceSignatures signatures_;
    std::unique_ptr<Provider> agent_;
    std::string nonce_;
    unsigned int random_ = 0;
};

} // namespace Kestrany::Agent::OpenId

#endif
