#ifndef ORLINDEX_BASE_CONSOLESTREAM_H
#define ORLINDEX_BASE_CONSOLESTREAM_H

#include <iosfwd>
#include <string>

namespace Kestrany::IdentityServices {

/// Writes a line and does not change the stream's state, because the host uses the stream too. A character that the
/// stream cannot encode is written as its code point, such as <U+4E2D>.
void WriteConsoleLine(std::wostream& stream, const std::wstring& line);

} // namespace Kestrany::IdentityServices

#endif
