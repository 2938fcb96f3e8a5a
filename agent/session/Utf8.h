#ifndef AGENT_SESSION_UTF8_H
#define AGENT_SESSION_UTF8_H

#include <cstddef>
#include <string_view>

namespace Kestrany::Agent {

/// Bytes before the first one that belongs to no character; all of them for a text that is well-formed UTF-8.
std::size_t WellFormedSize(std::string_view text);

/// Characters (code points) of a text that is well-formed UTF-8.
std::size_t CharacterCount(std::string_view text);

} // namespace Kestrany::Agent

#endif
