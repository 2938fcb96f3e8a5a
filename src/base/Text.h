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

/// UTF-8 to UTF-16; nullopt if the text is not well formed.
std::optional<std::wstring> WidenStrictly(std::string_view utf8);

/// UTF-16 to UTF-8; nullopt if a surrogate stands alone.
std::optional<std::string> NarrowStrictly(std::wstring_view utf16);

/// The most bytes of UTF-8 that one unit of UTF-16 becomes: a pair of surrogates becomes four, a lone one three.
inline constexpr std::size_t Utf8BytesPerUnit = 3;

/// Narrow into memory that is large enough for any text of that length, without a terminating zero. Returns the number
/// of bytes.
std::size_t NarrowInto(char* target, std::wstring_view utf16);

} // namespace Kestrany::IdentityServices

#endif
