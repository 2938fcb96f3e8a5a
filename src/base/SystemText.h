#ifndef ORLINDEX_BASE_SYSTEMTEXT_H
#define ORLINDEX_BASE_SYSTEMTEXT_H

#include <string>

namespace Kestrany::IdentityServices {

/// The platform's text for an error code, line end included.
std::wstring GetSystemErrorText(unsigned long code);

} // namespace Kestrany::IdentityServices

#endif
