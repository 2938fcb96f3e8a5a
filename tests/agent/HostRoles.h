#ifndef AGENT_TESTS_HOSTROLES_H
#define AGENT_TESTS_HOSTROLES_H

#include <string>
#include <vector>

namespace Kestrany::Agent {

inline constexpr char HostOption[] = "--host";

/// Plays the host that OtherHost started: arguments[0] is its meeting, arguments[1] its role, and the rest the role's
/// own. Answers the process's exit code, 0 when the role went as it should.
int PlayHost(const std::vector<std::string>& arguments);

/// What the two processes of a meeting signal each other by.
std::wstring ArrivedEventName(const std::string& meeting);
std::wstring LeaveEventName(const std::string& meeting);

} // namespace Kestrany::Agent

#endif
