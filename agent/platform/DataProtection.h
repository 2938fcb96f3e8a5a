#ifndef AGENT_PLATFORM_DATAPROTECTION_H
#define AGENT_PLATFORM_DATAPROTECTION_H

#include <optional>
#include <string>
#include <string_view>

namespace Kestrany::Agent {

// The system's data protection: only the same user on the same machine gets the bytes back. `purpose` keeps what was
// protected for one use from being taken for another.

/// Throws std::runtime_error when the system refuses.
std::string Protect(std::string_view bytes, std::string_view purpose);
/// Nothing for bytes that are damaged, or that another user or another purpose protected.
std::optional<std::string> Unprotect(std::string_view bytes, std::string_view purpose);

/// What SSOClientPrivate::Encrypt answers: the protected UTF-8 as base64 text. Nothing for a text that is not UTF-16.
std::optional<std::wstring> EncryptText(std::wstring_view text);
/// Takes EncryptText back; nothing for any other text.
std::optional<std::wstring> DecryptText(std::wstring_view encrypted);

} // namespace Kestrany::Agent

#endif
