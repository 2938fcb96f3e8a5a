#ifndef AGENT_IDENTITY_OPENID_OPENIDSOURCE_H
#define AGENT_IDENTITY_OPENID_OPENIDSOURCE_H

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "identity/IdentitySource.h"
#include "identity/openid/Logins.h"
#include "identity/openid/ProviderConfig.h"

namespace Kestrany::Agent::OpenId {

/// What the source needs of its process. What threads use is shared with them: it lives as long as the last one.
struct SourceParts
{
    Clock clock;
    Ticks ticks;
    RandomSource random;
    std::shared_ptr<Signatures> signatures;
    /// Makes the client for a proxy; nullopt for the system's settings. Throws std::runtime_error if it is refused.
    std::function<std::shared_ptr<Http>(const std::optional<ProxySettings>&)> makeHttp;
    std::shared_ptr<Browser> browser;
    std::shared_ptr<LoopbackListeners> listeners;
    std::shared_ptr<Prompts> prompts; ///< Null if the user is to see no window.
    /// Opens the store of one identity's logins; null for an invalid name.
    std::function<std::shared_ptr<LoginStore>(const std::string& identity)> openStore;
    Report report;
    /// Makes the process's thread call RunTimers. Any thread calls it.
    std::function<void()> wake;
};

/// Users of OpenID Connect providers. One thread at a time.
class OpenIdSource final : public IdentitySource
{
public:
    static constexpr std::size_t MaxIdentities = 64;
    /// Providers with the settings of different hosts that are kept at once.
    static constexpr std::size_t MaxProviders = 32;

    /// Without configurations nobody can sign in; `problem` then says why.
    OpenIdSource(std::optional<ProviderConfigs> configs, std::string problem, SourceParts parts);
    ~OpenIdSource() override;
    OpenIdSource(const OpenIdSource&) = delete;
    OpenIdSource& operator=(const OpenIdSource&) = delete;

    void Subscribe(EventSink sink) override { sink_ = std::move(sink); }
    SourceLogins* FindLogins(const std::string& identity) override;
    Features OfferedFeatures() const override { return {true, true}; }
    void RunTimers() override;
    std::optional<std::int64_t> NextTimer() const override;
    bool Shutdown() override;

private:
    /// What two callers share a provider for.
    using ProviderKey = std::tuple<Server, std::string, std::int32_t, std::string, std::string, std::vector<int>>;

    std::shared_ptr<Provider> FindProvider(const Caller& caller);
    std::shared_ptr<Provider> MakeProvider(const ProviderConfig& config, const Caller& caller) const;
    Failure WhyNone(Server server) const;
    std::map<Server, std::string> Issuers() const;

    const std::optional<ProviderConfigs> configs_;
    const std::string problem_;
    const SourceParts parts_;
    const std::shared_ptr<Workers> workers_;
    EventSink sink_;
    std::map<ProviderKey, std::shared_ptr<Provider>> providers_;
    std::map<std::string, std::unique_ptr<Logins>> logins_;
};

} // namespace Kestrany::Agent::OpenId

#endif
