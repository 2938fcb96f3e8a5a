// Flat interface: event callbacks.

#include "api/EventCallbacks.h"
#include "api/FlatState.h"
#include "api/NoThrow.h"
#include "orlindex/IObserver.h"

using namespace Kestrany::IdentityServices;

namespace Kestrany::IdentityServices {
namespace {

/// Turns the plugin's observer calls into calls of the callbacks that flat hosts register. Known here alone: the class
/// that it derives from is exported, and with it would be what describes this one.
class IdServicesObserver final : public IObserver
{
public:
    void OnLoggedIn(const std::int32_t& status) override { callbacks.Deliver(TALIX_EVENT_LOGGED_IN, status); }
    void OnLoggedOut(const std::int32_t& status) override { callbacks.Deliver(TALIX_EVENT_LOGGED_OUT, status); }
    void OnAccountCreated(const std::int32_t& status) override
    {
        callbacks.Deliver(TALIX_EVENT_ACCOUNT_CREATED, status);
    }
    void OnTokenRefreshed(const std::int32_t& status) override
    {
        callbacks.Deliver(TALIX_EVENT_TOKEN_REFRESHED, status);
    }
    void OnTokenAvailable(const std::int32_t& status) override
    {
        callbacks.Deliver(TALIX_EVENT_TOKEN_AVAILABLE, status);
    }
    void OnServerChanged(const Server&) override {}  // By contract flat hosts see neither this nor OnOtherEvent.
    bool OnAboutToLogout() override { return true; } // By contract flat hosts always consent.
    void OnLoginRestored() override { callbacks.Deliver(TALIX_EVENT_LOGIN_RESTORED, IdSuccess); }
    void OnOtherEvent(const IdServicesConsts::IdServicesEvent&) override {}

    EventCallbacks callbacks;
};

/// There from the library's load on, and never destroyed: the plugin may hold it while the process ends.
IdServicesObserver& observer = *new IdServicesObserver;

/// Whether the observer is added to the plugin.
bool observerRegistered = false;

} // namespace

// By contract the plugin is not told, also not after a stop that only counts: it keeps the observer, and is given it
// once more with the next callback.
void ForgetEventCallbacks()
{
    observerRegistered = false;
    observer.callbacks.Clear();
}

} // namespace Kestrany::IdentityServices

talix_status_code TALIX_CALL talix_add_event_callback(talix_event_callback callback, void* user_value)
{
    return NoThrow(IdFailed, [&] {
        if (!observerRegistered)
        {
            // Asked here only: while the observer is added, a callback is stored in every state of the library.
            if (!IsStarted())
                return IdNotInitialized;
            if (ISSOClient* client = ObtainInterface<ISSOClient>())
                client->AddObserver(&observer); // By contract its result is discarded.
            observerRegistered = true;          // Also without client.
        }
        if (callback) // A null callback has the plugin report events, and is not stored.
            observer.callbacks.Add(callback, user_value);
        return IdSuccess;
    });
}

talix_status_code TALIX_CALL talix_remove_event_callback(talix_event_callback callback)
{
    return NoThrow(IdFailed, [&] {
        if (!IsStarted())
            return IdNotInitialized;
        observer.callbacks.Remove(callback);
        if (observer.callbacks.IsEmpty() && observerRegistered)
        {
            if (ISSOClient* client = ObtainInterface<ISSOClient>())
                client->RemoveObserver(&observer); // By contract its result is discarded.
            observerRegistered = false;            // Also without client.
        }
        return IdSuccess;
    });
}
