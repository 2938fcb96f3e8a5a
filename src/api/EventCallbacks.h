#ifndef ORLINDEX_API_EVENTCALLBACKS_H
#define ORLINDEX_API_EVENTCALLBACKS_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "orlindex/talix.h"

namespace Kestrany::IdentityServices {

/// The callbacks that flat hosts register, each with its user value. Not synchronized: the caller serializes changes.
///
/// A callback may change the registry while it is called, and may cause a nested delivery: a removed callback is no
/// longer called, an added one is called from the next event on. Neither a delivery nor a removal allocates.
class EventCallbacks
{
public:
    /// Stores a callback once; adding it again replaces its user value.
    void Add(talix_event_callback callback, void* userValue);
    void Remove(talix_event_callback callback);
    void Clear();
    bool IsEmpty() const { return places_.empty(); }

    /// Calls every callback. The status is passed by value, so that all callbacks receive the same one.
    void Deliver(talix_event_code event, std::int32_t status);

private:
    struct Registration
    {
        talix_event_callback callback; ///< Null after its removal.
        void* userValue;
    };

    class Delivery;

    void DropRemoved();

    /// In the order in which they were added and are called. No index changes during a delivery.
    std::vector<Registration> registrations_;
    std::unordered_map<talix_event_callback, std::size_t> places_; ///< Index of each callback that is not removed.
    std::atomic<int> deliveries_ = 0;                              ///< Number of nested deliveries in progress.
};

} // namespace Kestrany::IdentityServices

#endif
