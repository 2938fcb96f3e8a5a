#include "identity/openid/Provider.h"

#include <chrono>
#include <utility>

#include "identity/openid/Limits.h"
#include "identity/openid/Refresh.h"
#include "identity/openid/ReplyJson.h"
#include "identity/openid/Url.h"
#include "identity/openid/UserInfo.h"

namespace Kestrany::Agent::OpenId {

namespace {

constexpr std::int64_t MetadataLifetime = 24 * 3600 * 1000; // In ticks.

RetryingHttp MakeHttp(const ProviderParts& parts, Backoff backoff)
{
    return RetryingHttp({parts.http, parts.clock, parts.ticks, parts.random, parts.pause}, backoff);
}

/// The failure of a token request. Not for a reply with tokens.
Failure FailureOfToken(const TokenOutcome& outcome, const std::string& url)
{
    if (const auto* const error = std::get_if<ProviderError>(&outcome))
        return GrantFailure(*error, url);
    return std::get<Failure>(outcome);
}

} // namespace

RedirectExpectation BrowserSignIn::Expectation(const ProviderConfig& config) const
{
    return {config.redirectPath, secrets.state.View(), config.issuer, requiresIssuer};
}

Provider::Provider(ProviderConfig config, Backoff backoff, ProviderParts parts)
    : config_(std::move(config)), parts_(std::move(parts)), http_(MakeHttp(parts_, backoff))
{
}

HttpReply Provider::Send(HttpRequest request, Repetition repetition, std::int64_t until) const
{
    request.limit = config_.requestLimit;
    return http_.Send(std::move(request), repetition, until);
}

HttpReply Provider::Get(const std::string& url, std::size_t maxReply, std::int64_t until) const
{
    HttpRequest request;
    request.url = url;
    request.maxReply = maxReply;
    return Send(std::move(request), Repetition::Harmless, until);
}

HttpReply Provider::Post(const std::string& url, Secret form, Repetition repetition, std::int64_t until) const
{
    HttpRequest request;
    request.url = url;
    request.form = std::move(form);
    request.maxReply = Limits::TokenReply;
    return Send(std::move(request), repetition, until);
}

Outcome<Metadata> Provider::Discover(std::int64_t until)
{
    {
        const std::lock_guard lock(mutex_);
        if (metadata_ && parts_.ticks() < metadataEnd_)
            return *metadata_;
    }
    const HttpReply reply = Get(DiscoveryAddress(config_.issuer), Limits::Metadata, until);
    Outcome<Metadata> metadata =
        ParseMetadata(reply, {config_.issuer, config_.allowInsecureLoopback, config_.assumePkce});
    if (FailureOf(metadata) == nullptr)
    {
        const std::lock_guard lock(mutex_);
        metadata_ = std::make_shared<const Metadata>(ResultOf(metadata));
        metadataEnd_ = parts_.ticks() + MetadataLifetime;
    }
    return metadata;
}

void Provider::Forget()
{
    const std::lock_guard lock(mutex_);
    metadata_ = nullptr;
    keys_ = nullptr;
}

// --- Sign-in in the browser -----------------------------------------------------------------------------------------

Outcome<BrowserSignIn> Provider::BeginSignIn(const std::string& clientId, const std::string& scope,
                                             const std::string& redirectUri, std::int64_t until)
{
    const Outcome<Metadata> discovered = Discover(until);
    if (const Failure* const failure = FailureOf(discovered))
        return *failure;
    const Metadata& metadata = ResultOf(discovered);
    BrowserSignIn signIn{{clientId, scope, redirectUri, config_.additionalParameters},
                         MakeSignInSecrets(parts_.random),
                         {},
                         metadata.sendsIssuer};
    if (metadata.requiresPushedRequests)
    {
        Outcome<Secret> address = PushRequest(metadata, signIn, until);
        if (const Failure* const failure = FailureOf(address))
            return *failure;
        signIn.address = TakeResult(std::move(address));
    }
    else
        signIn.address = AuthorizationAddress(
            metadata.authorizationEndpoint, AuthorizationParameters(signIn.request, signIn.secrets, parts_.signatures));
    return signIn;
}

Outcome<Secret> Provider::PushRequest(const Metadata& metadata, const BrowserSignIn& signIn, std::int64_t until)
{
    const std::string& url = metadata.pushedRequestEndpoint;
    const HttpReply reply = Post(url, AuthorizationParameters(signIn.request, signIn.secrets, parts_.signatures),
                                 Repetition::Harmless, until);
    const Outcome<std::string> requestUri = ParsePushedReply(reply, url);
    if (const Failure* const failure = FailureOf(requestUri))
    {
        Forget();
        return *failure;
    }
    return PushedAuthorizationAddress(metadata.authorizationEndpoint, signIn.request.clientId, ResultOf(requestUri));
}

Outcome<Grant> Provider::Redeem(const BrowserSignIn& signIn, const Secret& code, std::int64_t until)
{
    const Outcome<Metadata> discovered = Discover(until);
    if (const Failure* const failure = FailureOf(discovered))
        return *failure;
    const Metadata& metadata = ResultOf(discovered);
    Secret form;
    AppendParameter(form, "grant_type", "authorization_code");
    AppendParameter(form, "code", code.View());
    AppendParameter(form, "redirect_uri", signIn.request.redirectUri);
    AppendParameter(form, "client_id", signIn.request.clientId);
    AppendParameter(form, "code_verifier", signIn.secrets.verifier.View());
    TokenOutcome outcome = ParseTokenReply(Post(metadata.tokenEndpoint, std::move(form), Repetition::SingleUse, until),
                                           metadata.tokenEndpoint, {code.View(), signIn.secrets.verifier.View()});
    auto* const tokens = std::get_if<TokenReply>(&outcome);
    if (tokens == nullptr)
    {
        Forget();
        return FailureOfToken(outcome, metadata.tokenEndpoint);
    }
    IdTokenExpectation expectation = Expectation(metadata, signIn.request.clientId);
    expectation.nonce = signIn.secrets.nonce;
    return MakeGrant(metadata, std::move(*tokens), std::move(expectation), true, until);
}

// --- Sign-in with another device ------------------------------------------------------------------------------------

Outcome<DeviceAuthorization> Provider::BeginDeviceSignIn(const std::string& clientId, const std::string& scope,
                                                         std::int64_t until)
{
    const Outcome<Metadata> discovered = Discover(until);
    if (const Failure* const failure = FailureOf(discovered))
        return *failure;
    const std::string& url = ResultOf(discovered).deviceEndpoint;
    if (url.empty())
    {
        Forget(); // The provider may offer it from now on.
        return Failure{IdDeviceGrantNotOffered, "\"device_authorization_endpoint\" in the discovery document", "none"};
    }
    Secret form;
    AppendParameter(form, "client_id", clientId);
    AppendParameter(form, "scope", WithOpenIdScope(scope));
    for (const auto& [name, value] : config_.additionalParameters)
        AppendParameter(form, name, value);
    Outcome<DeviceAuthorization> device =
        ParseDeviceReply(Post(url, std::move(form), Repetition::Harmless, until), url,
                         AllowsInsecureEndpoints(config_.issuer, config_.allowInsecureLoopback));
    if (FailureOf(device) != nullptr)
        Forget();
    return device;
}

TokenOutcome Provider::PollDevice(const std::string& clientId, const DeviceAuthorization& device, std::int64_t until)
{
    const Outcome<Metadata> discovered = Discover(until);
    if (const Failure* const failure = FailureOf(discovered))
        return *failure;
    const std::string& url = ResultOf(discovered).tokenEndpoint;
    Secret form;
    AppendParameter(form, "grant_type", "urn:ietf:params:oauth:grant-type:device_code");
    AppendParameter(form, "device_code", device.deviceCode.View());
    AppendParameter(form, "client_id", clientId);
    HttpRequest request;
    request.url = url;
    request.form = std::move(form);
    request.maxReply = Limits::TokenReply;
    // Without retries: DevicePolling says when to ask again.
    request.limit = std::max(
        std::chrono::milliseconds(1),
        std::min<std::chrono::milliseconds>(config_.requestLimit, std::chrono::milliseconds(until - parts_.ticks())));
    return ParseTokenReply(parts_.http.Send(request), url, {device.deviceCode.View()});
}

Outcome<Grant> Provider::AcceptDeviceTokens(const std::string& clientId, TokenReply tokens, std::int64_t until)
{
    const Outcome<Metadata> discovered = Discover(until);
    if (const Failure* const failure = FailureOf(discovered))
        return *failure;
    IdTokenExpectation expectation = Expectation(ResultOf(discovered), clientId);
    expectation.nonceUse = IdTokenExpectation::Nonce::NoneSent;
    return MakeGrant(ResultOf(discovered), std::move(tokens), std::move(expectation), true, until);
}

// --- Refresh and sign-out -------------------------------------------------------------------------------------------

Outcome<Grant> Provider::Refresh(const RefreshRequest& request, std::int64_t until)
{
    const Outcome<Metadata> discovered = Discover(until);
    if (const Failure* const failure = FailureOf(discovered))
        return *failure;
    const Metadata& metadata = ResultOf(discovered);
    Secret form;
    AppendParameter(form, "grant_type", "refresh_token");
    AppendParameter(form, "refresh_token", request.refreshToken.View());
    AppendParameter(form, "client_id", request.clientId);
    // Repeated also if the answer is lost: there is no other token to go on with.
    TokenOutcome outcome = ParseTokenReply(Post(metadata.tokenEndpoint, std::move(form), Repetition::Harmless, until),
                                           metadata.tokenEndpoint, {request.refreshToken.View()});
    auto* const tokens = std::get_if<TokenReply>(&outcome);
    if (tokens == nullptr)
    {
        Forget();
        return FailureOfToken(outcome, metadata.tokenEndpoint);
    }
    if (!tokens->refreshToken.IsEmpty() && !request.keep(tokens->refreshToken))
        return Failure{IdNotStored, "a place for the new refresh token", "an error"};
    IdTokenExpectation expectation = Expectation(metadata, request.clientId);
    expectation.nonceUse =
        request.nonce.empty() ? IdTokenExpectation::Nonce::NoneSent : IdTokenExpectation::Nonce::IfPresent;
    expectation.nonce = request.nonce;
    expectation.subject = request.subject;
    return MakeGrant(metadata, std::move(*tokens), std::move(expectation), false, until);
}

Outcome<Json::Value> Provider::UserInfo(const Secret& accessToken, const std::string& subject, std::int64_t until)
{
    const Outcome<Metadata> discovered = Discover(until);
    if (const Failure* const failure = FailureOf(discovered))
        return *failure;
    const std::string& url = ResultOf(discovered).userInfoEndpoint;
    if (url.empty())
        return Json::Value(Json::objectValue);
    HttpRequest request;
    request.url = url;
    request.bearer = accessToken.Clone();
    request.maxReply = Limits::UserInfo;
    return ParseUserInfo(Send(std::move(request), Repetition::Harmless, until), url, subject);
}

std::optional<Failure> Provider::Revoke(const std::string& clientId, const Secret& token, std::string_view kind,
                                        std::int64_t until)
{
    const Outcome<Metadata> discovered = Discover(until);
    if (const Failure* const failure = FailureOf(discovered))
        return *failure;
    const std::string& url = ResultOf(discovered).revocationEndpoint;
    if (url.empty())
        return std::nullopt;
    return RevocationFailure(Post(url, RevocationForm(clientId, token, kind), Repetition::Harmless, until), url);
}

Secret Provider::EndSession(const EndSessionRequest& request, std::int64_t until)
{
    const Outcome<Metadata> discovered = Discover(until);
    if (FailureOf(discovered) != nullptr || ResultOf(discovered).endSessionEndpoint.empty())
        return {};
    return EndSessionAddress(ResultOf(discovered).endSessionEndpoint, request);
}

// --- Verification ---------------------------------------------------------------------------------------------------

Outcome<Provider::Keys> Provider::KeySet(const Metadata& metadata, bool isRenewed, std::int64_t until)
{
    if (!isRenewed)
    {
        const std::lock_guard lock(mutex_);
        if (keys_)
            return keys_;
    }
    Outcome<std::vector<ProviderKey>> parsed =
        ParseKeySet(Get(metadata.keySet, Limits::KeySet, until), metadata.keySet);
    if (const Failure* const failure = FailureOf(parsed))
        return *failure;
    Keys keys = std::make_shared<const std::vector<ProviderKey>>(TakeResult(std::move(parsed)));
    const std::lock_guard lock(mutex_);
    keys_ = keys;
    return keys;
}

IdTokenExpectation Provider::Expectation(const Metadata& metadata, const std::string& clientId) const
{
    IdTokenExpectation expectation;
    expectation.issuer = metadata.issuer;
    expectation.clientId = clientId;
    expectation.now = parts_.clock();
    expectation.clockTolerance = config_.clockTolerance;
    expectation.algorithms = metadata.algorithms;
    return expectation;
}

Outcome<IdTokenClaims> Provider::VerifyIdToken(const Metadata& metadata, const Secret& token,
                                               const IdTokenExpectation& expectation, std::int64_t until)
{
    const Outcome<SignedToken> parsed = ParseSignedToken(token.View());
    if (const Failure* const failure = FailureOf(parsed))
        return *failure;
    const SignedToken& signedToken = ResultOf(parsed);
    bool isRenewed = false;
    {
        const std::lock_guard lock(mutex_);
        isRenewed = keys_ == nullptr;
    }
    for (;;)
    {
        const Outcome<Keys> keys = KeySet(metadata, isRenewed, until);
        if (const Failure* const failure = FailureOf(keys))
            return *failure;
        const std::vector<const ProviderKey*> candidates = SelectKeys(*ResultOf(keys), signedToken);
        if (IsSignedByOneOf(candidates, signedToken, parts_.signatures))
            break;
        if (isRenewed)
            return Failure{IdIdTokenRefused, "a signature by a key of the provider",
                           candidates.empty() ? "the name of a key that is not in the set, or is of another type"
                                              : "a signature that does not match"};
        // The provider may have new keys. Requested once, not until a key fits.
        isRenewed = true;
    }
    return CheckClaims(signedToken, expectation, parts_.signatures);
}

Outcome<Grant> Provider::MakeGrant(const Metadata& metadata, TokenReply tokens, IdTokenExpectation expectation,
                                   bool needsIdToken, std::int64_t until)
{
    Grant grant;
    // A refresh that brings no new refresh token leaves the earlier one.
    const bool canRefresh = !tokens.refreshToken.IsEmpty() || !needsIdToken;
    grant.accessExpiry = AccessTokenExpiry(expectation.now, tokens.lifetime, canRefresh);
    if (tokens.idToken.IsEmpty() && needsIdToken)
        return Failure{IdIdTokenRefused, "an ID token", "none"};
    if (!tokens.idToken.IsEmpty())
    {
        expectation.accessToken = tokens.accessToken.View();
        expectation.providerTime = tokens.providerTime;
        Outcome<IdTokenClaims> claims = VerifyIdToken(metadata, tokens.idToken, expectation, until);
        if (const Failure* const failure = FailureOf(claims))
        {
            Forget();
            return *failure;
        }
        grant.claims = TakeResult(std::move(claims));
    }
    grant.accessToken = std::move(tokens.accessToken);
    grant.idToken = std::move(tokens.idToken);
    grant.refreshToken = std::move(tokens.refreshToken);
    return grant;
}

} // namespace Kestrany::Agent::OpenId
