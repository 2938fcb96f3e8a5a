#ifndef ORLINDEX_LOAD_SIGNERNAME_H
#define ORLINDEX_LOAD_SIGNERNAME_H

#include <string_view>
#include <windows.h>

#include <wincrypt.h>

namespace Kestrany::IdentityServices {

/// Whether the certificate's simple display name is on the list, byte for byte, and its wide form the same characters.
/// Each name on the list is ended by a NUL; text after the last NUL does not count.
bool SignerNameMatches(PCCERT_CONTEXT certificate, std::string_view signers);

} // namespace Kestrany::IdentityServices

#endif
