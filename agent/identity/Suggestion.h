#ifndef AGENT_IDENTITY_SUGGESTION_H
#define AGENT_IDENTITY_SUGGESTION_H

#include <string>
#include <vector>

namespace Kestrany::Agent {

/// The candidate that `text` is most likely a misspelling of; empty if none is similar.
std::string Suggestion(const std::string& text, const std::vector<std::string>& candidates);

/// The texts in quotes, separated by commas.
std::string Enumerated(const std::vector<std::string>& texts);

} // namespace Kestrany::Agent

#endif
