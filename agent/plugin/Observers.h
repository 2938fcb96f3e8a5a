#ifndef AGENT_PLUGIN_OBSERVERS_H
#define AGENT_PLUGIN_OBSERVERS_H

#include <mutex>
#include <vector>

#include "orlindex/IObserver.h"
#include "plugin/EventQueue.h"

namespace Kestrany::Agent {

/// The host's observers, and the calls to them. Any thread may call, also an observer.
///
/// Once Remove or Clear has returned, no other thread is inside a removed observer: the host may destroy it.
class Observers
{
public:
    /// Does nothing for an observer that was added before.
    void Add(IdentityServices::IObserver* observer);
    void Remove(IdentityServices::IObserver* observer);
    void Clear();

    /// Whether every observer consents to a logout.
    bool ConsentToLogout();
    /// Delivers the events that are in the queue now, on this thread. Events that observers cause stay for the next
    /// call.
    void Deliver(EventQueue& events);

private:
    template <class Call>
    void ForEach(const Call& call);
    bool Holds(IdentityServices::IObserver* observer) const;

    /// Held while observers are called. Recursive, because an observer may call back.
    std::recursive_mutex calls_;
    /// Guards the list alone. Not held during a call: Add does not wait for a delivery.
    mutable std::mutex listMutex_;
    std::vector<IdentityServices::IObserver*> list_;
};

} // namespace Kestrany::Agent

#endif
