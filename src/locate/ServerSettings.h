#ifndef ORLINDEX_LOCATE_SERVERSETTINGS_H
#define ORLINDEX_LOCATE_SERVERSETTINGS_H

#include <string>
#include <vector>

namespace Kestrany::IdentityServices {

/// How the server application is found and addressed: values of the client config file, and fixed names that hold once
/// the file has been read or found missing.
struct ServerSettings
{
    std::wstring searchName;     ///< File name that is searched for.
    std::wstring executableName; ///< File name that is joined with the directory found.
    std::vector<std::wstring> searchPaths;
    std::string defaultProcessName;
    std::string defaultServerName;
    std::wstring bundleId;
    std::wstring versionCompatibilityConfigFilePath;
    bool supportBothLocalAndAdmin = false;
};

} // namespace Kestrany::IdentityServices

#endif
