#ifndef ORLINDEX_SUPPORT_HANDLE_H
#define ORLINDEX_SUPPORT_HANDLE_H

#include "base/Handles.h"

namespace OrlindexTest {

using Kestrany::IdentityServices::Handle;

} // namespace OrlindexTest

#endif
