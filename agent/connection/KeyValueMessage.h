#ifndef AGENT_CONNECTION_KEYVALUEMESSAGE_H
#define AGENT_CONNECTION_KEYVALUEMESSAGE_H

#include <map>
#include <string>

namespace Kestrany::Agent {

// What goes over a server process's pipe.

inline constexpr char PingRequest[] = "ping";
inline constexpr char FreezeRequest[] = "freeze";
inline constexpr char FreezeAnswer[] = "frozen";

/// Names and values; none holds "=" or a line end.
using Answers = std::map<std::string, std::string>;

/// One line for each.
std::string WriteAnswers(const Answers& answers);
/// Lines that are none are left out.
Answers ReadAnswers(const std::string& message);

} // namespace Kestrany::Agent

#endif
