#ifndef ORLINDEX_BASE_TEXTCONVERSION_H
#define ORLINDEX_BASE_TEXTCONVERSION_H

#include <cstddef>
#include <string>
#include <string_view>

namespace Kestrany::IdentityServices {

/// UTF-8 to UTF-16 by the platform's conversion; ill-formed parts become U+FFFD, and a text that fails to convert
/// becomes empty.
std::wstring Widen(std::string_view utf8);

/// UTF-16 to UTF-8 by the platform's conversion; lone surrogates become U+FFFD, and a text that fails to convert
/// becomes empty.
std::string Narrow(std::wstring_view utf16);

/// How many bytes of UTF-8 a unit of UTF-16 becomes at most: a pair of surrogates becomes four, a lone one three.
inline constexpr std::size_t Utf8BytesAUnit = 3;

/// Narrow into memory that is large enough for any text of that length, without a terminating zero. Answers the size.
std::size_t NarrowInto(char* target, std::wstring_view utf16);

} // namespace Kestrany::IdentityServices

#endif
