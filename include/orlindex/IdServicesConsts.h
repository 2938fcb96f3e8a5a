#ifndef ORLINDEX_IDSERVICESCONSTS_H
#define ORLINDEX_IDSERVICESCONSTS_H

#include <cstdint>

namespace Kestrany::IdentityServices::IdServicesConsts {

/// Identity events, as the client plugin module raises them.
enum IdServicesEvent : std::int32_t
{
    LoggedIn = 0,
    LoggedOut = 1,
    LoggingOut = 2,
    AboutToLogout = 3,
    AccountCreated = 4,
    TokenRefreshed = 5,
    TokenAvailable = 6,
    ServerChanged = 7,
    LoginRestored = 8,
    LoginDialogTimeoutInIdIPCServer = 9
};

} // namespace Kestrany::IdentityServices::IdServicesConsts

#endif
