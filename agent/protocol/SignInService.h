#ifndef AGENT_PROTOCOL_SIGNINSERVICE_H
#define AGENT_PROTOCOL_SIGNINSERVICE_H

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "session/Logins.h"
#include "session/Scenario.h"

namespace Kestrany::Agent {

class ServiceHost;

/// What the service needs of the process that it lives in.
struct ServiceParts
{
    Clock clock;
    RandomSource random;
    TokenSigner signer;
    /// Milliseconds that only grow.
    std::function<std::int64_t()> ticks;
    /// Where the logins of one identity are kept; null for a name that is none.
    std::function<std::unique_ptr<LoginStorage>(const std::string& identity)> openStorage;
    std::function<void(const std::string& message)> warn;
    /// Ends the process at once, as a crash does.
    std::function<void()> crash;
};

/// The simulated identity service of one user: the logins of each identity, who hears of them, and the scenario. One
/// thread at a time.
class SignInService
{
public:
    static constexpr std::size_t MaxIdentities = 64;
    static constexpr std::size_t MaxConnections = 256;
    /// Connections among them whose host has not attached.
    static constexpr std::size_t MaxUnattached = 64;

    /// Without a scenario nobody can sign in.
    SignInService(std::optional<Scenario> scenario, ServiceParts parts);

    bool HasScenario() const { return hasScenario_; }
    const Scenario& CurrentScenario() const { return scenario_; }
    const ServiceParts& Parts() const { return parts_; }

    /// The logins of an identity, restored from its storage at the first time. Null for a name that is none, and for
    /// too many.
    Logins* FindLogins(const std::string& identity);

    void Add(ServiceHost& host) { hosts_.push_back(&host); }
    void Remove(ServiceHost& host);
    /// To be asked before a further connection is taken. Where there are too many, gives up the oldest one that has not
    /// attached: who says nothing keeps no host out. False where all have attached: the further one is not to be taken.
    bool MakeRoom();
    /// Answers what waited and can be answered by now.
    void Review();
    /// When Review has something to do without anybody's asking, in ticks.
    std::optional<std::int64_t> NextReview() const;

    /// Counts a call, and answers what is to go wrong with it.
    const Fault* NextFault(const std::string& operation);

private:
    struct Realm
    {
        std::unique_ptr<LoginStorage> storage;
        std::unique_ptr<Logins> logins;
    };

    const bool hasScenario_;
    const Scenario scenario_;
    const ServiceParts parts_;
    std::map<std::string, Realm> realms_;
    std::map<std::string, unsigned int> calls_;
    std::vector<ServiceHost*> hosts_;
};

} // namespace Kestrany::Agent

#endif
