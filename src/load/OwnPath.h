#ifndef ORLINDEX_LOAD_OWNPATH_H
#define ORLINDEX_LOAD_OWNPATH_H

#include <string>
#include <windows.h>

#include "base/FileHandle.h"

namespace Kestrany::IdentityServices {

/// The path of an open file, whatever links it was opened through, with the prefix of paths that are taken literally.
/// Empty, with the platform's error code, where the platform names none.
std::wstring OwnPathOf(const FileHandle& file, DWORD& error);

} // namespace Kestrany::IdentityServices

#endif
