#ifndef AGENT_SESSION_NEAREST_H
#define AGENT_SESSION_NEAREST_H

#include <string>
#include <vector>

namespace Kestrany::Agent {

/// The candidate that `text` is most likely a misspelling of; empty where none is close.
std::string Nearest(const std::string& text, const std::vector<std::string>& candidates);

/// The texts in quotes, separated by commas.
std::string Enumerated(const std::vector<std::string>& texts);

} // namespace Kestrany::Agent

#endif
