#include "identity/openid/OpenIdSource.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace Kestrany::Agent::OpenId {

namespace {

/// How long the end of the process waits for requests: the tokens of a refresh that is on its way are kept.
constexpr std::chrono::milliseconds ShutdownLimit{3000};

Backoff ToBackoff(const BackoffSettings& settings)
{
    return {std::chrono::seconds(settings.initialInterval), std::chrono::seconds(settings.maxInterval),
            settings.multiplier, settings.maxRetries, std::chrono::seconds(settings.jitter)};
}

/// A provider that owns what its requests use.
struct OwnedProvider
{
    OwnedProvider(const ProviderConfig& config, const Backoff& backoff, const SourceParts& parts,
                  std::shared_ptr<Http> usedHttp)
        : http(std::move(usedHttp)), signatures(parts.signatures),
          provider(config, backoff, {*http, *signatures, parts.clock, parts.ticks, parts.random, &Workers::Pause})
    {
    }

    const std::shared_ptr<Http> http;
    const std::shared_ptr<Signatures> signatures;
    Provider provider;
};

} // namespace

OpenIdSource::OpenIdSource(std::optional<ProviderConfigs> configs, std::string problem, SourceParts parts)
    : configs_(std::move(configs)), problem_(std::move(problem)), parts_(std::move(parts)),
      workers_(std::make_shared<Workers>(parts_.wake))
{
}

OpenIdSource::~OpenIdSource()
{
    logins_.clear(); // They use the providers.
}

SourceLogins* OpenIdSource::FindLogins(const std::string& identity)
{
    if (const auto found = logins_.find(identity); found != logins_.end())
        return found->second.get();
    std::shared_ptr<LoginStore> store;
    if (logins_.size() < MaxIdentities)
        store = parts_.openStore(identity);
    if (!store)
        return nullptr;
    LoginsParts parts;
    parts.signIns = {parts_.ticks,     parts_.random,  workers_,     parts_.browser,
                     parts_.listeners, parts_.prompts, parts_.report};
    parts.clock = parts_.clock;
    parts.findProvider = [this](const Caller& caller) { return FindProvider(caller); };
    parts.whyNone = [this](Server server) { return WhyNone(server); };
    parts.onEvent = [this, identity](const LoginEvent& event) { sink_(identity, event); };
    auto book = std::make_shared<LoginBook>(identity, Issuers(), std::move(store), parts_.report);
    auto logins = std::make_unique<Logins>(std::move(parts), std::move(book));
    logins->RestoreAll();
    return logins_.emplace(identity, std::move(logins)).first->second.get();
}

void OpenIdSource::RunTimers()
{
    workers_->RunCompletions();
    for (const auto& [identity, logins] : logins_)
        logins->RunTimers();
}

std::optional<std::int64_t> OpenIdSource::NextTimer() const
{
    std::optional<std::int64_t> next;
    for (const auto& [identity, logins] : logins_)
    {
        const std::optional<std::int64_t> own = logins->NextTimer();
        if (own && (!next || *own < *next))
            next = own;
    }
    return next;
}

bool OpenIdSource::Shutdown()
{
    for (const auto& [identity, logins] : logins_)
        logins->CancelAll();
    return workers_->Shutdown(ShutdownLimit);
}

std::shared_ptr<Provider> OpenIdSource::FindProvider(const Caller& caller)
{
    if (!configs_)
        return nullptr;
    const auto config = configs_->servers.find(caller.server);
    if (config == configs_->servers.end())
        return nullptr;
    const ProxySettings proxy = caller.proxy.value_or(ProxySettings());
    std::vector<int> backoff;
    if (caller.backoff)
        backoff = {caller.backoff->initialInterval, caller.backoff->maxInterval, caller.backoff->multiplier,
                   caller.backoff->maxRetries, caller.backoff->jitter};
    const ProviderKey key{caller.server, proxy.host, proxy.port, proxy.userName, proxy.password, backoff};
    if (const auto found = providers_.find(key); found != providers_.end())
        return found->second;
    if (providers_.size() >= MaxProviders)
        providers_.clear(); // Those in use live on with their users; a new one asks for the metadata again.
    return providers_.emplace(key, MakeProvider(config->second, caller)).first->second;
}

std::shared_ptr<Provider> OpenIdSource::MakeProvider(const ProviderConfig& config, const Caller& caller) const
{
    auto owned = std::make_shared<OwnedProvider>(config, ToBackoff(caller.backoff.value_or(BackoffSettings())), parts_,
                                                 parts_.makeHttp(caller.proxy));
    return {owned, &owned->provider};
}

Failure OpenIdSource::WhyNone(Server server) const
{
    if (!configs_)
        return {IdProviderConfigInvalid, "a valid configuration file", problem_};
    std::string names;
    for (const auto& [each, config] : configs_->servers)
        names += (names.empty() ? "" : ", ") + ServerName(each);
    return {IdProviderConfigInvalid, "a provider for the server " + ServerName(server), "providers for " + names};
}

std::map<Server, std::string> OpenIdSource::Issuers() const
{
    std::map<Server, std::string> issuers;
    if (configs_)
    {
        for (const auto& [server, config] : configs_->servers)
            issuers[server] = config.issuer;
    }
    return issuers;
}

} // namespace Kestrany::Agent::OpenId
