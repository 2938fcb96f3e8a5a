#ifndef ORLINDEX_LOCATE_REGISTRYKEY_H
#define ORLINDEX_LOCATE_REGISTRYKEY_H

#include <optional>
#include <string>
#include <windows.h>

namespace Kestrany::IdentityServices {

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
    /// Nothing where the subkey cannot be read or its name has 255 characters or more.
    std::optional<std::wstring> SubkeyName(DWORD index) const;
    /// The text of a string value, up to its first zero. Nothing where there is none, where it is no string, or where
    /// it has more than `byteLimit` bytes: fills which, where asked to (ERROR_DATATYPE_MISMATCH where it is no string).
    /// What lies in the registry need not be terminated, nor of an even number of bytes.
    std::optional<std::wstring> ReadText(const wchar_t* valueName, DWORD byteLimit, LSTATUS* status = nullptr) const;

private:
    HKEY key_ = nullptr;
    LSTATUS status_;
};

} // namespace Kestrany::IdentityServices

#endif
