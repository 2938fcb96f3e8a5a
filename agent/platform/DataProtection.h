#ifndef AGENT_PLATFORM_DATAPROTECTION_H
#define AGENT_PLATFORM_DATAPROTECTION_H

#include <optional>
#include <string>
#include <string_view>

namespace Kestrany::Agent {

// The system's data protection: only the same user on the same machine can decrypt. Bytes that were encrypted for one
// `purpose` cannot be decrypted for another.

/// Throws std::runtime_error on failure.
std::string Protect(std::string_view bytes, std::string_view purpose);
/// nullopt if the bytes are damaged, or were encrypted by another user or for another purpose.
std::optional<std::string> Unprotect(std::string_view bytes, std::string_view purpose);

/// The result of SSOClientPrivate::Encrypt: the encrypted UTF-8 as base64 text. nullopt if `text` is not UTF-16.
std::optional<std::wstring> EncryptText(std::wstring_view text);
/// Decrypts the result of EncryptText; nullopt for any other text.
std::optional<std::wstring> DecryptText(std::wstring_view encrypted);

} // namespace Kestrany::Agent

#endif
