#ifndef ORLINDEX_IOBSERVER_H
#define ORLINDEX_IOBSERVER_H

#include <cstdint>

#include "Export.h"
#include "IdErrorCode.h"
#include "IdServicesConsts.h"

namespace Kestrany::IdentityServices {

/// Receives identity events. A host implements it and hands its object to IdServicesMgr::AddObserver.
///
/// The client plugin module queues events and calls these operations on the thread that calls
/// IdServicesMgr::DispatchEvent (or talix_dispatch_events), never on another one. OnAboutToLogout alone is a question
/// and does not wait: it is called inside IdServicesMgr::Logout (or talix_logout), on that caller's thread. The
/// observer belongs to the host and must live until it has been removed, or until the last IdServicesMgr::Uninitialize
/// has returned.
///
/// The order of the operations is part of the contract with the plugin. The destructor is last (slot 9) because it
/// takes one slot of the virtual table under Microsoft's rules and two under the Itanium ones: the operations before it
/// have the same place under every compiler.
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
    /// The client talks to another identity server from now on.
    virtual void OnServerChanged(const Server& server) = 0;
    /// The user is about to be signed out. False refuses; a forced logout does not ask.
    virtual bool OnAboutToLogout() = 0;
    /// A login of an earlier run was restored.
    virtual void OnLoginRestored() = 0;
    /// Any other identity event.
    virtual void OnOtherEvent(const IdServicesConsts::IdServicesEvent& event) = 0;

    /// Last of the operations, and defined in the library: a host that derives links against it.
    virtual ~IObserver();
};

} // namespace Kestrany::IdentityServices

#endif
