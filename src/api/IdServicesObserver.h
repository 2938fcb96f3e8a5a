#ifndef ORLINDEX_API_IDSERVICESOBSERVER_H
#define ORLINDEX_API_IDSERVICESOBSERVER_H

#include <cstddef>
#include <unordered_map>

#include "orlindex/IObserver.h"
#include "orlindex/talix.h"

namespace Kestrany::IdentityServices {

/// Turns the plugin's observer calls into calls of the callbacks that flat hosts register. Not protected against use by
/// several threads; a callback must not change the registry while it is called.
class IdServicesObserver final : public IObserver
{
public:
    /// Stores a callback once; adding it again replaces its user value.
    void Add(talix_event_callback callback, void* userValue) { callbacks_[callback] = userValue; }
    void Remove(talix_event_callback callback) { callbacks_.erase(callback); }
    void Clear() { callbacks_.clear(); }
    bool IsEmpty() const { return callbacks_.empty(); }

    void OnLoggedIn(const std::int32_t& status) override { Deliver(TALIX_EVENT_LOGGED_IN, status); }
    void OnLoggedOut(const std::int32_t& status) override { Deliver(TALIX_EVENT_LOGGED_OUT, status); }
    void OnAccountCreated(const std::int32_t& status) override { Deliver(TALIX_EVENT_ACCOUNT_CREATED, status); }
    void OnTokenRefreshed(const std::int32_t& status) override { Deliver(TALIX_EVENT_TOKEN_REFRESHED, status); }
    void OnTokenAvailable(const std::int32_t& status) override { Deliver(TALIX_EVENT_TOKEN_AVAILABLE, status); }
    void OnServerChanged(const Server&) override {}
    bool OnAboutToLogout() override { return true; }
    void OnLoginRestored() override { Deliver(TALIX_EVENT_LOGIN_RESTORED, IdSuccess); }
    void OnOtherEvent(const IdServicesConsts::IdServicesEvent&) override {}

private:
    /// The status by value: it is read once, before the first callback.
    void Deliver(talix_event_code event, std::int32_t status)
    {
        for (const auto& [callback, userValue] : callbacks_)
        {
            if (callback)
                callback(event, status, userValue);
        }
    }

    std::unordered_map<talix_event_callback, void*> callbacks_;
};

} // namespace Kestrany::IdentityServices

#endif
