#ifndef ORLINDEX_LOCATE_REGISTRY_H
#define ORLINDEX_LOCATE_REGISTRY_H

#include <optional>
#include <string>
#include <vector>
#include <windows.h>

namespace Kestrany::IdentityServices {

// Where the server application's installers registered its directory.

/// An open registry key.
class RegistryKey
{
public:
    /// Opens `path` below `root`. A 32-bit process on 64-bit Windows that fails tries the 64-bit view once more.
    RegistryKey(HKEY root, const std::wstring& path, REGSAM access);
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;
    ~RegistryKey();

    bool IsOpen() const { return status_ == ERROR_SUCCESS; }
    /// Result of the last attempt to open.
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
    /// more than `byteLimit` bytes. What lies in the registry need not be terminated, nor have an even number of bytes.
    TextValue ReadText(const wchar_t* valueName, DWORD byteLimit) const;

private:
    HKEY key_ = nullptr;
    LSTATUS status_;
};

/// The key that the server application's installer writes.
inline constexpr const wchar_t* ServerApplicationKey = L"HKEY_LOCAL_MACHINE\\SOFTWARE\\Kestrany\\Pellwick";

/// The value of a key that holds a directory.
inline constexpr const wchar_t* LocationValueName = L"Location";

/// A key that was asked for a location.
struct RegistryKeyFinding
{
    std::wstring key;            ///< The full name, or a subkey's own name.
    LSTATUS opened;              ///< Result of opening the key.
    std::optional<LSTATUS> read; ///< Result of reading the value; nullopt if the key is not open.
    std::optional<std::wstring> location;
};

/// The registered location of the greatest version.
struct LatestRegistryLocation
{
    bool found = false;
    std::string version;
    std::string location;                 ///< UTF-8, so that a directory named in any script survives.
    std::wstring key;                     ///< Full name of the key that has it.
    std::vector<RegistryKeyFinding> keys; ///< Every subkey that was looked at.
};

/// Looks among the subkeys of `keyText` ("HKEY_LOCAL_MACHINE\..."), which are named by versions, for the greatest one
/// that has a location.
LatestRegistryLocation GetLatestRegistryLocation(const std::wstring& keyText);

/// Reads the location from ServerApplicationKey itself, without a version.
RegistryKeyFinding ReadUnversionedLocation();

} // namespace Kestrany::IdentityServices

#endif
