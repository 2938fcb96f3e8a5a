#ifndef ORLINDEX_BASE_WOW64_H
#define ORLINDEX_BASE_WOW64_H

namespace Kestrany::IdentityServices {

/// Whether this process is a 32-bit one on 64-bit Windows. A query that fails counts as no.
bool IsWow64();

} // namespace Kestrany::IdentityServices

#endif
