#include "identity/simulated/SimulatedSource.h"

#include <algorithm>
#include <utility>

namespace Kestrany::Agent::Simulated {

namespace {

/// Stands in for a scenario that is wrong: its users are not known.
Scenario InvalidScenario()
{
    Scenario scenario;
    scenario.isValid = false;
    scenario.users.clear();
    return scenario;
}

} // namespace

SimulatedSource::SimulatedSource(std::optional<Scenario> scenario, SourceParts parts)
    : scenario_(scenario ? *std::move(scenario) : InvalidScenario()), parts_(std::move(parts))
{
}

SourceLogins* SimulatedSource::FindLogins(const std::string& identity)
{
    if (const auto found = realms_.find(identity); found != realms_.end())
        return found->second.logins.get();
    Realm realm;
    if (realms_.size() < MaxIdentities)
        realm.storage = parts_.openStorage(identity);
    if (!realm.storage)
        return nullptr;
    LoginParts parts{parts_.clock, parts_.ticks, parts_.random, parts_.signer,
                     [this, identity](const LoginEvent& event) { sink_(identity, event); }};
    realm.logins = std::make_unique<Logins>(scenario_, std::move(parts), *realm.storage);
    if (scenario_.isValid)
        realm.logins->RestoreAll();
    return realms_.emplace(identity, std::move(realm)).first->second.logins.get();
}

const Fault* SimulatedSource::NextFault(const std::string& operation)
{
    const std::vector<std::string>& known = FaultyOperations();
    if (std::find(known.begin(), known.end(), operation) == known.end())
        return nullptr; // Not counted either: a host can make up any number of names.
    const unsigned int call = ++calls_[operation];
    const auto found = std::find_if(scenario_.faults.begin(), scenario_.faults.end(), [&](const Fault& fault) {
        return fault.operation == operation && (fault.onwards ? call >= fault.call : call == fault.call);
    });
    return found == scenario_.faults.end() ? nullptr : &*found;
}

} // namespace Kestrany::Agent::Simulated
