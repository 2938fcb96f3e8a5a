#ifndef ORLINDEX_API_LOCALSYSTEMACCOUNT_H
#define ORLINDEX_API_LOCALSYSTEMACCOUNT_H

namespace Kestrany::IdentityServices {

/// Whether the caller runs under the local system account, which no user can sign in to. A question that the platform
/// cannot answer counts as no.
bool RunsAsLocalSystem();

} // namespace Kestrany::IdentityServices

#endif
