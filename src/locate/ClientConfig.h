#ifndef ORLINDEX_LOCATE_CLIENTCONFIG_H
#define ORLINDEX_LOCATE_CLIENTCONFIG_H

#include <optional>
#include <string>
#include <vector>

#include "base/Json.h"

namespace Kestrany::IdentityServices {

// The client config file, Orlindex.config. Portable: fuzzed and tested natively.

inline constexpr wchar_t ClientConfigFileName[] = L"Orlindex.config";

/// What the object "ssoServer" of the file says. Texts are UTF-8, and empty if the file has none.
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

/// What parsing the file came to.
struct ParsedClientConfig
{
    std::optional<ClientConfigValues> values; ///< nullopt for a text that is not JSON.
    JsonError error;                          ///< Meaningful if there are no values.
    std::vector<ClientConfigKey> keys;        ///< "ssoServer", then those below it.
};

/// A key whose value has another type counts as missing.
ParsedClientConfig ParseClientConfig(const std::string& bytes);

/// The directories of "searchPaths". Empty ones are dropped: they are never searched, and a file may hold millions.
std::vector<std::wstring> SplitSearchPaths(const std::wstring& text);

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

/// Its destructor sets the settings that no file changes, however reading the file ended. They are allocated in the
/// constructor, so that setting them needs no memory.
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
