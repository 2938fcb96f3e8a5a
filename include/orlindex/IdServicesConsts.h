#ifndef ORLINDEX_IDSERVICESCONSTS_H
#define ORLINDEX_IDSERVICESCONSTS_H

#include <cstdint>

namespace Kestrany::IdentityServices::IdServicesConsts {

/// Identity events. The client plugin module decides when to raise each. Each is listed with the IObserver operation
/// that is declared for it, and the slot of that operation. The event codes of flat callbacks (::talix_event_code) are
/// other numbers.
enum IdServicesEvent : std::int32_t
{
    LoggedIn = 0,      ///< The user signed in. IObserver::OnLoggedIn, slot 0.
    LoggedOut = 1,     ///< The user signed out. IObserver::OnLoggedOut, slot 1.
    LoggingOut = 2,    ///< A logout has begun. IObserver::OnOtherEvent, slot 8.
    AboutToLogout = 3, ///< The user is about to be signed out. IObserver::OnAboutToLogout, slot 6: a logout calls it at
                       ///< once instead of queueing the event.
    AccountCreated = 4, ///< An account was created during a login. IObserver::OnAccountCreated, slot 2.
    TokenRefreshed = 5, ///< The OAuth2 access token was refreshed. IObserver::OnTokenRefreshed, slot 3.
    TokenAvailable = 6, ///< An OAuth2 access token became available. IObserver::OnTokenAvailable, slot 4.
    ServerChanged = 7,  ///< The client uses another identity server. IObserver::OnServerChanged, slot 5.
    LoginRestored = 8,  ///< A login from an earlier run was restored. IObserver::OnLoginRestored, slot 7.
    LoginDialogTimeoutInIdIPCServer = 9 ///< A login waited too long in the server process. IObserver::OnOtherEvent,
                                        ///< slot 8.
};

} // namespace Kestrany::IdentityServices::IdServicesConsts

#endif
