#include "plugin/Observers.h"

#include <algorithm>

#include "plugin/NoThrow.h"

namespace Kestrany::Agent {

using IdentityServices::IObserver;
namespace Events = IdentityServices::IdServicesConsts;

namespace {

void Notify(IObserver& observer, const Event& event)
{
    switch (event.kind)
    {
    case Events::LoggedIn:
        return observer.OnLoggedIn(event.status);
    case Events::LoggedOut:
        return observer.OnLoggedOut(event.status);
    case Events::AccountCreated:
        return observer.OnAccountCreated(event.status);
    case Events::TokenRefreshed:
        return observer.OnTokenRefreshed(event.status);
    case Events::TokenAvailable:
        return observer.OnTokenAvailable(event.status);
    case Events::ServerChanged:
        return observer.OnServerChanged(event.server);
    case Events::LoginRestored:
        return observer.OnLoginRestored();
    default:
        return observer.OnOtherEvent(event.kind);
    }
}

} // namespace

void Observers::Add(IObserver* observer)
{
    const std::lock_guard lock(listMutex_);
    if (std::find(list_.begin(), list_.end(), observer) == list_.end())
        list_.push_back(observer);
}

void Observers::Remove(IObserver* observer)
{
    const std::lock_guard calls(calls_);
    const std::lock_guard lock(listMutex_);
    list_.erase(std::remove(list_.begin(), list_.end(), observer), list_.end());
}

void Observers::Clear()
{
    const std::lock_guard calls(calls_);
    const std::lock_guard lock(listMutex_);
    list_.clear();
}

bool Observers::ConsentToLogout()
{
    bool consent = true;
    ForEach([&](IObserver& observer) { consent = observer.OnAboutToLogout() && consent; });
    return consent;
}

void Observers::Deliver(EventQueue& events)
{
    const std::lock_guard calls(calls_);
    for (std::size_t left = events.Size(); left > 0; --left)
    {
        const std::optional<Event> event = events.Pop();
        if (!event)
            return;
        ForEach([&](IObserver& observer) { Notify(observer, *event); });
    }
}

template <class Call>
void Observers::ForEach(const Call& call)
{
    const std::lock_guard calls(calls_);
    std::vector<IObserver*> snapshot;
    {
        const std::lock_guard lock(listMutex_);
        snapshot = list_;
    }
    for (IObserver* observer : snapshot)
    {
        // A previous observer may have removed this one.
        if (Holds(observer))
            NoThrow([&] { call(*observer); });
    }
}

bool Observers::Holds(IObserver* observer) const
{
    const std::lock_guard lock(listMutex_);
    return std::find(list_.begin(), list_.end(), observer) != list_.end();
}

} // namespace Kestrany::Agent
