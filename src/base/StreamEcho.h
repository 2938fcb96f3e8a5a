#ifndef ORLINDEX_BASE_STREAMECHO_H
#define ORLINDEX_BASE_STREAMECHO_H

#include <iosfwd>
#include <string>

namespace Kestrany::IdentityServices {

/// Writes a line and leaves the stream's state as it was: the stream is the host's too. A character that the stream
/// cannot encode appears as its code point, <U+4E2D>.
void EchoLine(std::wostream& stream, const std::wstring& line);

} // namespace Kestrany::IdentityServices

#endif
