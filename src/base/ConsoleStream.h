#ifndef ORLINDEX_BASE_CONSOLESTREAM_H
#define ORLINDEX_BASE_CONSOLESTREAM_H

#include <iosfwd>
#include <string>

namespace Kestrany::IdentityServices {

/// Writes a line and leaves the stream's state as it was: the stream is the host's too. A character that the stream
/// cannot encode appears as its code point, <U+4E2D>.
void WriteConsoleLine(std::wostream& stream, const std::wstring& line);

} // namespace Kestrany::IdentityServices

#endif
