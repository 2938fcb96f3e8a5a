#include "protocol/SignInService.h"

#include <algorithm>
#include <utility>

#include "protocol/ServiceHost.h"

namespace Kestrany::Agent {

namespace {

/// A scenario that could not be read says nothing about users: nobody is known.
Scenario NobodysScenario()
{
    Scenario scenario;
    scenario.users.clear();
    return scenario;
}

} // namespace

SignInService::SignInService(std::optional<Scenario> scenario, ServiceParts parts)
    : hasScenario_(scenario.has_value()), scenario_(scenario ? *std::move(scenario) : NobodysScenario()),
      parts_(std::move(parts))
{
}

Logins* SignInService::FindLogins(const std::string& identity)
{
    if (const auto found = realms_.find(identity); found != realms_.end())
        return found->second.logins.get();
    Realm realm;
    if (realms_.size() < MaxIdentities)
        realm.storage = parts_.openStorage(identity);
    if (!realm.storage)
        return nullptr;
    LoginParts parts{parts_.clock, parts_.random, parts_.signer, [this, identity](const LoginEvent& event) {
                         for (ServiceHost* host : hosts_)
                             host->Deliver(identity, event);
                     }};
    realm.logins = std::make_unique<Logins>(scenario_, std::move(parts), *realm.storage);
    if (hasScenario_)
        realm.logins->RestoreAll();
    return realms_.emplace(identity, std::move(realm)).first->second.logins.get();
}

void SignInService::Remove(ServiceHost& host)
{
    hosts_.erase(std::remove(hosts_.begin(), hosts_.end(), &host), hosts_.end());
}

bool SignInService::MakeRoom()
{
    std::size_t connections = 0;
    std::size_t unattached = 0;
    ServiceHost* oldest = nullptr; // Of the unattached; hosts stand in the order in which they came.
    for (ServiceHost* host : hosts_)
    {
        if (host->IsGivenUp())
            continue;
        ++connections;
        if (host->IsAttached())
            continue;
        ++unattached;
        oldest = oldest == nullptr ? host : oldest;
    }
    if (connections < MaxConnections && unattached < MaxUnattached)
        return true;
    if (oldest == nullptr)
    {
        parts_.warn("A host was sent away: there are too many");
        return false;
    }
    parts_.warn("A host was sent away: it has not attached, and others come");
    oldest->GiveUp();
    return true;
}

void SignInService::Review()
{
    for (ServiceHost* host : hosts_)
        host->Review();
}

std::optional<std::int64_t> SignInService::NextReview() const
{
    std::optional<std::int64_t> next;
    for (const ServiceHost* host : hosts_)
    {
        const std::optional<std::int64_t> own = host->NextReview();
        if (own && (!next || *own < *next))
            next = own;
    }
    return next;
}

const Fault* SignInService::NextFault(const std::string& operation)
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

} // namespace Kestrany::Agent
