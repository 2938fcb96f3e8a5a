#ifndef ORLINDEX_API_EVENTCALLBACKS_H
#define ORLINDEX_API_EVENTCALLBACKS_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "orlindex/talix.h"

namespace Kestrany::IdentityServices {

/// The callbacks that flat hosts register, each with its user value. Not protected against changes by several threads.
///
/// A callback may change the registry while it is called, and may cause a further delivery: what it removed is not
/// called any more, what it added is called from the next event on. Neither a delivery nor a removal allocates.
class EventCallbacks
{
public:
    /// Stores a callback once; adding it again replaces its user value.
    void Add(talix_event_callback callback, void* userValue);
    void Remove(talix_event_callback callback);
    void Clear();
    bool IsEmpty() const { return places_.empty(); }

    /// Calls every callback. The status by value: it is read once, before the first of them.
    void Deliver(talix_event_code event, std::int32_t status);

private:
    struct Registration
    {
        talix_event_callback callback; ///< Null once it is removed.
        void* userValue;
    };

    class Delivery;

    void DropRemoved();

    /// In the order in which they were added and are called. No place changes while a delivery is under way.
    std::vector<Registration> registrations_;
    std::unordered_map<talix_event_callback, std::size_t> places_; ///< Of those that are not removed.
    std::atomic<int> deliveries_ = 0;                              ///< Under way, one inside the other.
};

} // namespace Kestrany::IdentityServices

#endif
