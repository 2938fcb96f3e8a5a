#include "locate/RegistryKey.h"

#include <algorithm>
#include <vector>

#include "base/Wow64.h"

namespace Kestrany::IdentityServices {

RegistryKey::RegistryKey(HKEY root, const std::wstring& path, REGSAM access)
    : status_(RegOpenKeyExW(root, path.c_str(), 0, access, &key_))
{
    if (!IsOpen() && IsWow64())
        status_ = RegOpenKeyExW(root, path.c_str(), 0, access | KEY_WOW64_64KEY, &key_);
}

RegistryKey::~RegistryKey()
{
    if (IsOpen())
        RegCloseKey(key_);
}

DWORD RegistryKey::SubkeyCount() const
{
    DWORD count = 0;
    const LSTATUS status = RegQueryInfoKeyW(key_, nullptr, nullptr, nullptr, &count, nullptr, nullptr, nullptr, nullptr,
                                            nullptr, nullptr, nullptr);
    return status == ERROR_SUCCESS ? count : 0;
}

std::optional<std::wstring> RegistryKey::SubkeyName(DWORD index) const
{
    wchar_t name[255] = {};
    DWORD length = 255;
    if (RegEnumKeyExW(key_, index, name, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
        return std::nullopt;
    return std::wstring(name, length);
}

std::optional<std::wstring> RegistryKey::ReadText(const wchar_t* valueName, DWORD byteLimit, LSTATUS* status) const
{
    std::vector<wchar_t> buffer(byteLimit / sizeof(wchar_t));
    DWORD type = REG_NONE;
    DWORD size = byteLimit;
    LSTATUS result = RegQueryValueExW(key_, valueName, nullptr, &type, reinterpret_cast<BYTE*>(buffer.data()), &size);
    if (result == ERROR_SUCCESS && type != REG_SZ && type != REG_EXPAND_SZ)
        result = ERROR_DATATYPE_MISMATCH;
    if (status)
        *status = result;
    if (result != ERROR_SUCCESS)
        return std::nullopt;
    const auto end = buffer.begin() + static_cast<std::ptrdiff_t>(std::min(size, byteLimit) / sizeof(wchar_t));
    return std::wstring(buffer.begin(), std::find(buffer.begin(), end, L'\0'));
}

} // namespace Kestrany::IdentityServices
