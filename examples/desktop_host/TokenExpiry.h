// When the access token expires.
#ifndef DESKTOP_HOST_TOKENEXPIRY_H
#define DESKTOP_HOST_TOKENEXPIRY_H

#include <cstdint>

namespace DesktopHost {

/// Seconds since 1970 UTC; 0 if it is not known. May wait for the server application.
std::int64_t TokenExpiry();

} // namespace DesktopHost

#endif
