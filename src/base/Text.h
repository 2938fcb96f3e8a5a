#ifndef ORLINDEX_BASE_TEXT_H
#define ORLINDEX_BASE_TEXT_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace Kestrany::IdentityServices {

/// UTF-8 to UTF-16 by the platform's conversion. Ill-formed parts become U+FFFD; a text that fails to convert becomes
/// empty.
std::wstring Widen(std::string_view utf8);

/// UTF-16 to UTF-8 by the platform's conversion. Lone surrogates become U+FFFD; a text that fails to convert becomes
/// empty.
std::string Narrow(std::wstring_view utf16);

/// UTF-8 to UTF-16; nullopt if the text is ill-formed.
std::optional<std::wstring> WidenStrictly(std::string_view utf8);

/// UTF-16 to UTF-8; nullopt if the text has a lone surrogate.
std::optional<std::string> NarrowStrictly(std::wstring_view utf16);

/// The most UTF-8 bytes per UTF-16 unit: a surrogate pair becomes four bytes, any other unit at most three.
inline constexpr std::size_t Utf8BytesPerUnit = 3;

/// Narrow into `target`, which must have room for Utf8BytesPerUnit bytes per unit of `utf16`. Writes no terminating
/// zero. Returns the number of bytes.
std::size_t NarrowInto(char* target, std::wstring_view utf16);

} // namespace Kestrany::IdentityServices

#endif
