#ifndef AGENT_IDENTITY_SIMULATED_SIMULATEDSOURCE_H
#define AGENT_IDENTITY_SIMULATED_SIMULATEDSOURCE_H

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "identity/IdentitySource.h"
#include "identity/simulated/Logins.h"
#include "identity/simulated/Scenario.h"

namespace Kestrany::Agent::Simulated {

/// What the source needs of its process.
struct SourceParts
{
    Clock clock;
    /// Milliseconds that only grow.
    std::function<std::int64_t()> ticks;
    RandomSource random;
    TokenSigner signer;
    /// Opens the storage of one identity's logins; null for an invalid name.
    std::function<std::unique_ptr<LoginStorage>(const std::string& identity)> openStorage;
};

/// Simulated users, who behave as a scenario says. One thread at a time.
class SimulatedSource final : public IdentitySource
{
public:
    static constexpr std::size_t MaxIdentities = 64;

    /// Without a scenario nobody can sign in.
    SimulatedSource(std::optional<Scenario> scenario, SourceParts parts);

    void Subscribe(EventSink sink) override { sink_ = std::move(sink); }
    SourceLogins* FindLogins(const std::string& identity) override;
    Features OfferedFeatures() const override { return scenario_.features; }
    const Fault* NextFault(const std::string& operation) override;
    std::chrono::milliseconds Latency() const override { return scenario_.latency; }

private:
    struct Realm
    {
        std::unique_ptr<LoginStorage> storage;
        std::unique_ptr<Logins> logins;
    };

    const Scenario scenario_;
    const SourceParts parts_;
    EventSink sink_;
    std::map<std::string, Realm> realms_;
    std::map<std::string, unsigned int> calls_;
};

} // namespace Kestrany::Agent::Simulated

#endif
