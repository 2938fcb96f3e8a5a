#ifndef ORLINDEX_LOCATE_REGISTRY_H
#define ORLINDEX_LOCATE_REGISTRY_H

#include <optional>
#include <string>
#include <vector>
#include <windows.h>

namespace Kestrany::IdentityServices {

// Reads the server application's directory, which its installers write to the registry.

/// An open registry key.
class RegistryKey
{
public:
    /// Opens `path` below `root`. If that fails, a 32-bit process on 64-bit Windows tries the 64-bit view once.
    RegistryKey(HKEY root, const std::wstring& path, REGSAM access);
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;
    ~RegistryKey();

    bool IsOpen() const { return status_ == ERROR_SUCCESS; }
    /// Result of the last attempt to open the key.
    LSTATUS Status() const { return status_; }
    HKEY Get() const { return key_; }

    DWORD SubkeyCount() const;
    /// nullopt if the subkey cannot be read or its name has 255 characters or more.
    std::optional<std::wstring> SubkeyName(DWORD index) const;

    struct TextValue
    {
        LSTATUS status; ///< ERROR_DATATYPE_MISMATCH for a value that is not a string.
        std::optional<std::wstring> text;
    };
    /// Reads a string value up to its first zero. There is no text if the value is missing, is not a string, or has
    /// more than `byteLimit` bytes. A registry value may lack its terminating zero or have an odd number of bytes.
    TextValue ReadText(const wchar_t* valueName, DWORD byteLimit) const;

private:
    HKEY key_ = nullptr;
    LSTATUS status_;
};

/// The key that the server application's installer writes.
inline constexpr const wchar_t* ServerApplicationKey = L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Kestrany\\Pellwick";

/// The value of a key that holds a directory.
inline constexpr const wchar_t* LocationValueName = L"Location";

/// A key whose location was read.
struct RegistryKeyFinding
{
    std::wstring key;            ///< Full name of the key, or only the name of a subkey.
    LSTATUS opened;              ///< Result of opening the key.
    std::optional<LSTATUS> read; ///< Result of reading the value; nullopt if the key is not open.
    std::optional<std::wstring> location;
};

/// The registered location of the highest version.
struct LatestRegistryLocation
{
    bool found = false;
    std::string version;
    std::string location;                 ///< UTF-8, which supports every script.
    std::wstring key;                     ///< Full name of the key that has the location.
    std::vector<RegistryKeyFinding> keys; ///< Every subkey that was read.
};

/// Finds the highest version among the subkeys of `keyText` ("HKEY_LOCAL_MACHINE\...") that have a location. The
/// subkeys are named by versions.
LatestRegistryLocation GetLatestRegistryLocation(const std::wstring& keyText);

/// Reads the location from ServerApplicationKey itself, without a version.
RegistryKeyFinding ReadUnversionedLocation();

} // namespace Kestrany::IdentityServices

#endif
