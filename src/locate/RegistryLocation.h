#ifndef ORLINDEX_LOCATE_REGISTRYLOCATION_H
#define ORLINDEX_LOCATE_REGISTRYLOCATION_H

#include <string>

namespace Kestrany::IdentityServices {

class StartObserver;

/// The key that the server application's installer writes.
inline constexpr const wchar_t* ServerApplicationKey = L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Kestrany\\Pellwick";

/// The value below a key that holds a directory.
inline constexpr const wchar_t* LocationValueName = L"Location";

/// Looks among the subkeys of `keyText` ("HKEY_LOCAL_MACHINE\..."), which are named by versions, for the greatest one
/// that holds a location, and fills both. Both texts are UTF-8, so that a directory named in any script survives.
bool GetLatestRegistryLocation(const std::wstring& keyText, std::string& version, std::string& location,
                               StartObserver* observer = nullptr);

} // namespace Kestrany::IdentityServices

#endif
