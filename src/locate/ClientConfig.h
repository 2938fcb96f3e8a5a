#ifndef ORLINDEX_LOCATE_CLIENTCONFIG_H
#define ORLINDEX_LOCATE_CLIENTCONFIG_H

#include <optional>
#include <string>
#include <vector>

#include "base/Json.h"

namespace Kestrany::IdentityServices {

// The client config file, Orlindex.config. Portable: fuzzed and tested natively.

inline constexpr wchar_t ClientConfigFileName[] = L"Orlindex.config";

/// The values of the object "ssoServer" in the file. Texts are UTF-8, and empty if the file has none.
struct ClientConfigValues
{
    std::string bundleId;
    std::string versionCompatibilityConfigFilePath;
    std::string searchPaths; ///< Directories separated by ";".
    bool supportBothLocalAndAdmin = false;
};

/// A key that was looked for.
struct ClientConfigKey
{
    std::string name;
    bool present;
    bool rightType;
};

/// The result of parsing the file.
struct ParsedClientConfig
{
    std::optional<ClientConfigValues> values; ///< nullopt if the text is not JSON.
    JsonError error;                          ///< Valid only if there are no values.
    std::vector<ClientConfigKey> keys;        ///< "ssoServer", then the keys below it.
};

/// A key whose value has the wrong type counts as missing.
ParsedClientConfig ParseClientConfig(const std::string& bytes);

/// The directories of "searchPaths". Empty ones are dropped: they are never searched, and a file may have millions.
std::vector<std::wstring> SplitSearchPaths(const std::wstring& text);

/// How the server application is found and addressed: values of the client config file, and fixed names that are set
/// once the file has been read or found missing.
struct ServerSettings
{
    std::wstring searchName;     ///< File name that is searched for.
    std::wstring executableName; ///< File name that is joined with the directory that was found.
    std::vector<std::wstring> searchPaths;
    std::string defaultProcessName;
    std::string defaultServerName;
    std::wstring bundleId;
    std::wstring versionCompatibilityConfigFilePath;
    bool supportBothLocalAndAdmin = false;
};

/// The destructor sets the fixed settings, even if reading the file threw an exception. The constructor allocates them,
/// so that the destructor needs no memory.
class FixedSettings
{
public:
    explicit FixedSettings(ServerSettings& settings);
    FixedSettings(const FixedSettings&) = delete;
    FixedSettings& operator=(const FixedSettings&) = delete;
    ~FixedSettings();

private:
    ServerSettings& settings_;
    ServerSettings fixed_;
};

} // namespace Kestrany::IdentityServices

#endif
