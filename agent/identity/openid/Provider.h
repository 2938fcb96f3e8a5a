#ifndef AGENT_IDENTITY_OPENID_PROVIDER_H
#define AGENT_IDENTITY_OPENID_PROVIDER_H

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "identity/openid/AuthorizationRequest.h"
#include "identity/openid/DeviceGrant.h"
#include "identity/openid/Failure.h"
#include "identity/openid/IdToken.h"
#include "identity/openid/Metadata.h"
#include "identity/openid/ProviderConfig.h"
#include "identity/openid/RedirectRequest.h"
#include "identity/openid/Retry.h"
#include "identity/openid/Services.h"
#include "identity/openid/SignOut.h"
#include "identity/openid/TokenReply.h"

namespace Kestrany::Agent::OpenId {

/// What the requests to a provider need of their process.
struct ProviderParts
{
    Http& http;
    Signatures& signatures;
    Clock clock;
    Ticks ticks;
    RandomSource random;
    Pause pause;
};

/// A sign-in in the browser, between its request and the redirect.
struct BrowserSignIn
{
    AuthorizationRequest request;
    SignInSecrets secrets;
    Secret address; ///< What the browser opens.
    bool requiresIssuer = false;

    /// What its redirect looks like. Valid as long as this object.
    RedirectExpectation Expectation(const ProviderConfig& config) const;
};

/// The tokens of one product, verified.
struct Grant
{
    Secret accessToken;
    TimePoint accessExpiry;
    Secret idToken;      ///< Empty after a refresh whose reply has none: the earlier one stays.
    Secret refreshToken; ///< Empty if the provider issued none; after a refresh, the earlier one then stays.
    std::optional<IdTokenClaims> claims; ///< Of the ID token.
};

/// What a refresh presents, and what its reply is compared with.
struct RefreshRequest
{
    std::string clientId;
    const Secret& refreshToken;
    std::string subject;
    std::string nonce; ///< Of the sign-in; empty if it had none.
    /// Receives a new refresh token as soon as it arrives, before any other request: the earlier one may no longer
    /// work, so the new one has to outlive this process. False if it was not stored.
    std::function<bool(const Secret& refreshToken)> keep;
};

/// The requests to one provider. They wait for the network: they are called by worker threads, and any number of
/// threads may call. `until`: in ticks; no operation lasts longer, retries included.
class Provider
{
public:
    Provider(ProviderConfig config, Backoff backoff, ProviderParts parts);

    const ProviderConfig& Config() const { return config_; }

    /// The provider's metadata: requested once, and again after a day or a failure.
    Outcome<Metadata> Discover(std::int64_t until);

    /// Begins a sign-in in the browser.
    Outcome<BrowserSignIn> BeginSignIn(const std::string& clientId, const std::string& scope,
                                       const std::string& redirectUri, std::int64_t until);
    /// Redeems the code of its redirect.
    Outcome<Grant> Redeem(const BrowserSignIn& signIn, const Secret& code, std::int64_t until);

    /// Begins a sign-in with another device.
    Outcome<DeviceAuthorization> BeginDeviceSignIn(const std::string& clientId, const std::string& scope,
                                                   std::int64_t until);
    /// Polls once. DevicePolling decides what the result means.
    TokenOutcome PollDevice(const std::string& clientId, const DeviceAuthorization& device, std::int64_t until);
    /// Verifies the tokens of a poll.
    Outcome<Grant> AcceptDeviceTokens(const std::string& clientId, TokenReply tokens, std::int64_t until);

    /// Replaces the tokens of a login. An ID token that is refused makes the refresh fail; the new refresh token was
    /// handed to `keep` before.
    Outcome<Grant> Refresh(const RefreshRequest& request, std::int64_t until);

    /// The claims of the userinfo endpoint; an empty object if the provider has none.
    Outcome<Json::Value> UserInfo(const Secret& accessToken, const std::string& subject, std::int64_t until);

    /// Revokes a refresh or access token. nullopt also if the provider offers no revocation.
    std::optional<Failure> Revoke(const std::string& clientId, const Secret& token, std::string_view kind,
                                  std::int64_t until);
    /// The address of the provider's logout page; empty if it has none.
    Secret EndSession(const EndSessionRequest& request, std::int64_t until);

private:
    using Keys = std::shared_ptr<const std::vector<ProviderKey>>;

    HttpReply Send(HttpRequest request, Repetition repetition, std::int64_t until) const;
    HttpReply Get(const std::string& url, std::size_t maxReply, std::int64_t until) const;
    HttpReply Post(const std::string& url, Secret form, Repetition repetition, std::int64_t until) const;

    Outcome<Secret> PushRequest(const Metadata& metadata, const BrowserSignIn& signIn, std::int64_t until);
    Outcome<Keys> KeySet(const Metadata& metadata, bool isRenewed, std::int64_t until);
    IdTokenExpectation Expectation(const Metadata& metadata, const std::string& clientId) const;
    Outcome<IdTokenClaims> VerifyIdToken(const Metadata& metadata, const Secret& token,
                                         const IdTokenExpectation& expectation, std::int64_t until);
    /// The grant of a reply whose ID token must be there, or may be missing.
    Outcome<Grant> MakeGrant(const Metadata& metadata, TokenReply tokens, IdTokenExpectation expectation,
                             bool needsIdToken, std::int64_t until);
    /// Makes the next operation request the metadata and the keys again: an endpoint may have moved.
    void Forget();

    const ProviderConfig config_;
    const ProviderParts parts_;
    const RetryingHttp http_;

    std::mutex mutex_; ///< For the members below. Not held during requests.
    std::shared_ptr<const Metadata> metadata_;
    std::int64_t metadataEnd_ = 0; ///< In ticks.
    Keys keys_;
};

} // namespace Kestrany::Agent::OpenId

#endif
