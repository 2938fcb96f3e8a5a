#ifndef AGENT_IDENTITY_BASE64URL_H
#define AGENT_IDENTITY_BASE64URL_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace Kestrany::Agent {

/// Fills a block with unpredictable random bytes; throws on failure.
using RandomSource = std::function<void(void* bytes, std::size_t size)>;

/// The bytes as base64url text without padding.
std::string Base64Url(std::string_view bytes);

/// The bytes of a base64url text. nullopt if it has padding, another character, an impossible length, or bits that are
/// set beyond the last byte: each value has one text only.
std::optional<std::string> FromBase64Url(std::string_view text);

/// `size` random bytes as base64url text without padding.
std::string RandomText(const RandomSource& random, std::size_t size);

} // namespace Kestrany::Agent

#endif
