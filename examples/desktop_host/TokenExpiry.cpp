#include "TokenExpiry.h"

// Only the class interface returns the expiry. It requires the compiler that built the library. With another compiler,
// the window only says whether the token is valid: an access token is opaque to a client, so the program does not look
// into it.
#ifdef DESKTOP_HOST_CLASSES
#include "orlindex/IdServicesMgr.h"
#endif

namespace DesktopHost {

std::int64_t TokenExpiry()
{
#ifdef DESKTOP_HOST_CLASSES
    using Kestrany::IdentityServices::IdServicesMgr;
    const IdServicesMgr* const manager = IdServicesMgr::GetInstance();
    return manager != nullptr ? static_cast<std::int64_t>(manager->GetOAuth2AccessTokenExpiryDate()) : 0;
#else
    return 0;
#endif
}

} // namespace DesktopHost
