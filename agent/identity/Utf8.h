#ifndef AGENT_IDENTITY_UTF8_H
#define AGENT_IDENTITY_UTF8_H

#include <cstddef>
#include <string_view>

namespace Kestrany::Agent {

/// Bytes before the first ill-formed sequence; the size of the text if it is well-formed UTF-8.
std::size_t WellFormedSize(std::string_view text);

/// Characters (code points) of a text that is well-formed UTF-8.
std::size_t CharacterCount(std::string_view text);

} // namespace Kestrany::Agent

#endif
