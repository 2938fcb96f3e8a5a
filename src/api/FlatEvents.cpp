// Flat interface: event callbacks.

#include "api/FlatGuard.h"
#include "api/FlatState.h"
#include "api/IdServicesObserver.h"

using namespace Kestrany::IdentityServices;

namespace Kestrany::IdentityServices {
namespace {

/// There from the library's load on, and never destroyed: the plugin may hold it while the process ends.
IdServicesObserver& observer = *new IdServicesObserver;

/// Whether the observer is added to the plugin.
bool observerRegistered = false;

} // namespace

void ForgetEventCallbacks()
{
    observerRegistered = false;
    observer.Clear();
}

} // namespace Kestrany::IdentityServices

talix_status_code TALIX_CALL talix_add_event_callback(talix_event_callback callback, void* user_value)
{
    return Guarded(IdFailed, [&] {
        if (!observerRegistered)
        {
            if (!IsStarted())
                return IdNotInitialized;
            if (ISSOClient* client = ObtainInterface<ISSOClient>())
                client->AddObserver(&observer);
            observerRegistered = true;
        }
        if (callback)
            observer.Add(callback, user_value);
        return IdSuccess;
    });
}

talix_status_code TALIX_CALL talix_remove_event_callback(talix_event_callback callback)
{
    return Guarded(IdFailed, [&] {
        if (!IsStarted())
            return IdNotInitialized;
        observer.Remove(callback);
        if (observer.IsEmpty() && observerRegistered)
        {
            if (ISSOClient* client = ObtainInterface<ISSOClient>())
                client->RemoveObserver(&observer);
            observerRegistered = false;
        }
        return IdSuccess;
    });
}
