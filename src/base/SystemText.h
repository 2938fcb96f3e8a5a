#ifndef ORLINDEX_BASE_SYSTEMTEXT_H
#define ORLINDEX_BASE_SYSTEMTEXT_H

#include <string>
#include <string_view>

namespace Kestrany::IdentityServices {

/// UTF-8 to UTF-16 by the platform's conversion; ill-formed parts become U+FFFD, and a text that fails to convert
/// becomes empty.
std::wstring Widen(std::string_view utf8);

/// UTF-16 to UTF-8 by the platform's conversion; lone surrogates become U+FFFD, and a text that fails to convert
/// becomes empty.
std::string Narrow(std::wstring_view utf16);

/// The platform's text for an error code, line end included.
std::wstring GetSystemErrorText(unsigned long code);

} // namespace Kestrany::IdentityServices

#endif
