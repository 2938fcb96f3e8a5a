#ifndef ORLINDEX_LOAD_FILEIDENTITY_H
#define ORLINDEX_LOAD_FILEIDENTITY_H

#include <windows.h>

#include "load/HeldFile.h"

namespace Kestrany::IdentityServices {

/// Whether a loaded module was mapped from that file: the same file index on the same volume. No, where the platform
/// does not say. The mapping is asked, not the path that the module was loaded by, which may lead elsewhere by now.
bool IsMappedFrom(HMODULE module, const HeldFile& held);

} // namespace Kestrany::IdentityServices

#endif
