#ifndef ORLINDEX_BASE_MESSAGE_H
#define ORLINDEX_BASE_MESSAGE_H

#include <boost/format.hpp>
#include <locale>
#include <string>

namespace Kestrany::IdentityServices {

/// Builds a message from a text with positional references: Message(L"Found %1% at %2%", name, path).
template <class... Arguments>
std::wstring Message(const wchar_t* text, const Arguments&... arguments)
{
    boost::wformat format(text, std::locale::classic()); // A code is not grouped as the host groups its numbers.
    (void)(format % ... % arguments);
    return format.str();
}

} // namespace Kestrany::IdentityServices

#endif
