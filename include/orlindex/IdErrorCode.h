#ifndef ORLINDEX_IDERRORCODE_H
#define ORLINDEX_IDERRORCODE_H

#include "talix.h"

namespace Kestrany::IdentityServices {

/// Result of a class member. The classes and the flat interface share the same codes and names, so that a code means
/// the same in both. Values of 1000 and above that have no name here come from the client plugin module and pass
/// through unchanged.
using IdErrorCode = ::talix_status_code;

using ::IdApiUnavailable;
using ::IdBufferTooSmall;
using ::IdClientUnavailable;
using ::IdFailed;
using ::IdInvalidClientId;
using ::IdInvalidHostWindow;
using ::IdInvalidProfileRecord;
using ::IdInvalidProxyHost;
using ::IdInvalidProxyPort;
using ::IdInvalidProxyRecord;
using ::IdInvalidVersionRecord;
using ::IdNotInitialized;
using ::IdNotSupported;
using ::IdRunningAsLocalSystem;
using ::IdServerQuitFailed;
using ::IdSuccess;

using ::Server;
using ::TALIXEnvironment;

} // namespace Kestrany::IdentityServices

#endif
