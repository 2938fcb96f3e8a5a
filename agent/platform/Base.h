#ifndef AGENT_PLATFORM_BASE_H
#define AGENT_PLATFORM_BASE_H

// The names of the support library for Windows that the agent's sources use everywhere.

#include "base/Files.h"
#include "base/Handles.h"
#include "base/Text.h"

namespace Kestrany::Agent {

using IdentityServices::FileContents;
using IdentityServices::Handle;
using IdentityServices::LocalMemory;
using IdentityServices::Narrow;
using IdentityServices::NarrowStrictly;
using IdentityServices::OwnFile;
using IdentityServices::ReadFileContents;
using IdentityServices::TaskMemory;
using IdentityServices::Widen;
using IdentityServices::WidenStrictly;

/// The system's text for an error code, with the code, on one line: for messages.
std::string SystemMessage(unsigned long code);

} // namespace Kestrany::Agent

#endif
