#ifndef AGENT_PLATFORM_TEXT_H
#define AGENT_PLATFORM_TEXT_H

#include <optional>
#include <string>
#include <string_view>

namespace Kestrany::Agent {

/// UTF-8 of a UTF-16 text; nothing when a surrogate stands alone.
std::optional<std::string> ToUtf8(std::wstring_view text);
/// UTF-16 of a UTF-8 text; nothing when the text is not well formed.
std::optional<std::wstring> ToWide(std::string_view text);

/// UTF-8 of any UTF-16 text, with a replacement character where it is not well formed: for messages.
std::string ToDisplay(std::wstring_view text);

/// The system's text for an error code, with the code, on one line: for messages.
std::string SystemMessage(unsigned long code);

} // namespace Kestrany::Agent

#endif
