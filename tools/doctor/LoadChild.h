#ifndef ORLINDEX_DOCTOR_LOADCHILD_H
#define ORLINDEX_DOCTOR_LOADCHILD_H

#include <string>
#include <vector>

namespace Orlindex::Doctor {

/// First argument of the process that loads a plugin; the tool gives it to itself alone.
inline constexpr wchar_t LoadChildCommand[] = L"load-in-this-process";

/// The part of that process: starts as a host would, and says what happens. `arguments` are the pipe's handle, the
/// host's folder and, where one module is to be loaded, its path. The signature counts here as in a host.
int RunLoadChild(const std::vector<std::wstring>& arguments);

} // namespace Orlindex::Doctor

#endif
