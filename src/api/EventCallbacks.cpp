#include "api/EventCallbacks.h"

#include <algorithm>

namespace Kestrany::IdentityServices {

/// Keeps the index of every registration for the lifetime of the object, because loops in Deliver depend on it.
class EventCallbacks::Delivery
{
public:
    explicit Delivery(EventCallbacks& callbacks) : callbacks_(callbacks) { ++callbacks_.deliveries_; }
    ~Delivery()
    {
        if (--callbacks_.deliveries_ == 0)
            callbacks_.DropRemoved();
    }
    Delivery(const Delivery&) = delete;
    Delivery& operator=(const Delivery&) = delete;

private:
    EventCallbacks& callbacks_;
};

void EventCallbacks::Add(talix_event_callback callback, void* userValue)
{
    const auto place = places_.find(callback);
    if (place != places_.end())
    {
        registrations_[place->second].userValue = userValue;
        return;
    }
    registrations_.push_back({nullptr, userValue}); // Counts as removed until places_ has its index: that may throw.
    places_.emplace(callback, registrations_.size() - 1);
    registrations_.back().callback = callback;
}

void EventCallbacks::Remove(talix_event_callback callback)
{
    const auto place = places_.find(callback);
    if (place == places_.end())
        return;
    registrations_[place->second].callback = nullptr;
    places_.erase(place);
    if (deliveries_ == 0)
        DropRemoved();
}

void EventCallbacks::Clear()
{
    while (!places_.empty())
        Remove(places_.begin()->first);
}

/// Erases removed registrations only if they are the majority, so that removing many one by one takes constant time on
/// average.
void EventCallbacks::DropRemoved()
{
    if (registrations_.size() <= 2 * places_.size())
        return;
    registrations_.erase(std::remove_if(registrations_.begin(), registrations_.end(),
                                        [](const Registration& registration) { return !registration.callback; }),
                         registrations_.end());
    for (std::size_t place = 0; place < registrations_.size(); ++place)
        places_.find(registrations_[place].callback)->second = place;
}

void EventCallbacks::Deliver(talix_event_code event, std::int32_t status)
{
    if (registrations_.empty())
        return;
    const Delivery delivery(*this);
    const std::size_t count = registrations_.size(); // A callback that is added during this event is not called for it.
    for (std::size_t place = 0; place < count; ++place)
    {
        const Registration registration = registrations_[place]; // A copy: adding a callback may reallocate the list.
        if (registration.callback)
            registration.callback(event, status, registration.userValue);
    }
}

} // namespace Kestrany::IdentityServices
