#include "MachineKey.h"

#include <stdexcept>

namespace OrlindexTest {

namespace {

constexpr wchar_t KeyPath[] = L"SOFTWARE\\Kestrany\\Pellwick";
constexpr wchar_t Mark[] = L"MadeByOrlindexTests";
constexpr wchar_t Location[] = L"Location";

void Check(LSTATUS status, const char* what)
{
    if (status != ERROR_SUCCESS)
        throw std::runtime_error(std::string(what) + ": error " + std::to_string(status));
}

void SetValue(const std::wstring& key, const wchar_t* name, DWORD type, const void* data, DWORD size)
{
    HKEY opened = nullptr;
    Check(RegCreateKeyExW(HKEY_LOCAL_MACHINE, key.c_str(), 0, nullptr, 0, KEY_SET_VALUE, nullptr, &opened, nullptr),
          "making a registry key");
    const LSTATUS status = RegSetValueExW(opened, name, 0, type, static_cast<const BYTE*>(data), size);
    RegCloseKey(opened);
    Check(status, "writing a registry value");
}

DWORD ByteSize(const std::wstring& text)
{
    return static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
}

std::wstring VersionPath(const std::wstring& version)
{
    return std::wstring(KeyPath) + L'\\' + version;
}

} // namespace

MachineKey::MachineKey()
{
    RemoveStale();
    const DWORD mark = 1;
    SetValue(KeyPath, Mark, REG_DWORD, &mark, sizeof mark);
}

MachineKey::~MachineKey()
{
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, KeyPath);
}

void MachineKey::SetLocation(const std::wstring& location) const
{
    SetLocation(REG_SZ, location.c_str(), ByteSize(location));
}

void MachineKey::SetLocation(DWORD type, const void* data, DWORD size) const
{
    SetValue(KeyPath, Location, type, data, size);
}

void MachineKey::AddVersion(const std::wstring& version, const std::wstring& location) const
{
    AddVersion(version, REG_SZ, location.c_str(), ByteSize(location));
}

void MachineKey::AddVersion(const std::wstring& version, DWORD type, const void* data, DWORD size) const
{
    SetValue(VersionPath(version), Location, type, data, size);
}

void MachineKey::AddVersion(const std::wstring& version) const
{
    SetValue(VersionPath(version), L"Other", REG_SZ, L"", sizeof(wchar_t));
}

bool MachineKey::Exists()
{
    HKEY key = nullptr;
    const bool exists = RegOpenKeyExW(HKEY_LOCAL_MACHINE, KeyPath, 0, KEY_READ, &key) == ERROR_SUCCESS;
    if (exists)
        RegCloseKey(key);
    return exists;
}

void MachineKey::RemoveStale()
{
    if (!Exists())
        return;
    if (RegGetValueW(HKEY_LOCAL_MACHINE, KeyPath, Mark, RRF_RT_REG_DWORD, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
        throw std::runtime_error("Pellwick is installed on this machine. Run the tests where it is not: they write its "
                                 "registry key.");
    Check(RegDeleteTreeW(HKEY_LOCAL_MACHINE, KeyPath), "removing a stale registry key");
}

} // namespace OrlindexTest
