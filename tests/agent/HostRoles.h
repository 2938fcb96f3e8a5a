#ifndef AGENT_TESTS_HOSTROLES_H
#define AGENT_TESTS_HOSTROLES_H

#include <string>
#include <vector>

namespace Kestrany::Agent {

inline constexpr char HostOption[] = "--host";

/// Plays the host that OtherHost started: arguments[0] is its meeting, arguments[1] its role, and the rest those of
/// the role. Returns the process's exit code, 0 on success.
int PlayHost(const std::vector<std::string>& arguments);

/// Events by which the two processes of a meeting signal each other.
std::wstring ArrivedEventName(const std::string& meeting);
std::wstring LeaveEventName(const std::string& meeting);

} // namespace Kestrany::Agent

#endif
