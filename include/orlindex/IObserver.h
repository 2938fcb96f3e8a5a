#ifndef ORLINDEX_IOBSERVER_H
#define ORLINDEX_IOBSERVER_H

#include <cstdint>

#include "Export.h"
#include "IdErrorCode.h"
#include "IdServicesConsts.h"

namespace Kestrany::IdentityServices {

/// Receives identity events. A host implements it and passes its object to IdServicesMgr::AddObserver.
///
/// The client plugin module queues events and calls these operations only on the thread that calls
/// IdServicesMgr::DispatchEvent (or talix_dispatch_events). OnAboutToLogout is the one exception: it is a question, so
/// the plugin does not queue it, but calls it inside IdServicesMgr::Logout (or talix_logout), on that caller's thread.
/// The host owns the observer. It must live until it is removed, or until the last IdServicesMgr::Uninitialize has
/// returned.
///
/// The order of the operations is part of the contract with the plugin. The destructor is last (slot 9) because it
/// takes one slot of the virtual table in Microsoft's ABI and two in the Itanium ABI: so every compiler gives the
/// operations before it the same slot.
class ORLINDEX_API IObserver
{
public:
    /// The user signed in. `status`: result of the login, an IdErrorCode.
    virtual void OnLoggedIn(const std::int32_t& status) = 0;
    /// The user signed out. `status`: result of the logout, an IdErrorCode.
    virtual void OnLoggedOut(const std::int32_t& status) = 0;
    /// An account was created during a login. `status`: an IdErrorCode.
    virtual void OnAccountCreated(const std::int32_t& status) = 0;
    /// The OAuth2 access token was refreshed. `status`: an IdErrorCode.
    virtual void OnTokenRefreshed(const std::int32_t& status) = 0;
    /// An OAuth2 access token became available. `status`: an IdErrorCode.
    virtual void OnTokenAvailable(const std::int32_t& status) = 0;
    /// The client now uses another identity server.
    virtual void OnServerChanged(const Server& server) = 0;
    /// The user is about to be signed out. Return false to refuse. A forced logout does not call it.
    virtual bool OnAboutToLogout() = 0;
    /// A login from an earlier run was restored.
    virtual void OnLoginRestored() = 0;
    /// Any other identity event.
    virtual void OnOtherEvent(const IdServicesConsts::IdServicesEvent& event) = 0;

    /// Last of the operations. The library defines it: a host that derives from this class must link the library.
    virtual ~IObserver();
};

} // namespace Kestrany::IdentityServices

#endif
