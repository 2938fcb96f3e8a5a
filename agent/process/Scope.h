#ifndef AGENT_PROCESS_SCOPE_H
#define AGENT_PROCESS_SCOPE_H

#include <string>

namespace Kestrany::Agent {

/// What the names of pipes and kernel objects begin with: the same for processes of one user and one settings folder,
/// and for no other. Throws std::runtime_error when the system does not tell the user.
const std::wstring& ScopeName();

/// Name of the pipe on which the server of an identity takes hosts.
std::wstring HostPipeName(const std::string& identity);

} // namespace Kestrany::Agent

#endif
