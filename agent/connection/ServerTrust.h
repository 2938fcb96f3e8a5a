#ifndef AGENT_CONNECTION_SERVERTRUST_H
#define AGENT_CONNECTION_SERVERTRUST_H

#include <string>

#include "platform/Handle.h"

namespace Kestrany::Agent {

/// What speaks against the process at the server's end of a pipe; empty when it is this user's and runs the file
/// `executable`, however its path is spelled.
std::string Distrust(HANDLE pipe, const std::wstring& executable);

} // namespace Kestrany::Agent

#endif
