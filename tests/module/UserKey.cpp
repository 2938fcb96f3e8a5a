#include "UserKey.h"

#include <stdexcept>

namespace OrlindexTest {

namespace {

void Check(LSTATUS status, const char* what)
{
    if (status != ERROR_SUCCESS)
        throw std::runtime_error(std::string(what) + ": error " + std::to_string(status));
}

HKEY MakeKey(const std::wstring& path)
{
    HKEY key = nullptr;
    Check(RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, REG_OPTION_VOLATILE, KEY_SET_VALUE, nullptr,
                          &key, nullptr),
          "making a registry key");
    return key;
}

} // namespace

UserKey::UserKey() : path_(L"Software\\OrlindexTests-" + std::to_wstring(GetCurrentProcessId()))
{
    RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str()); // A crashed process with the same ID may have left it.
    RegCloseKey(MakeKey(path_));
}

UserKey::~UserKey()
{
    RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
}

std::wstring UserKey::Text() const
{
    return L"HKEY_CURRENT_USER\\" + path_;
}

void UserKey::AddVersion(const std::wstring& version, const std::wstring& location) const
{
    AddVersion(version, REG_SZ, location.c_str(), static_cast<DWORD>((location.size() + 1) * sizeof(wchar_t)));
}

void UserKey::AddVersion(const std::wstring& version, DWORD type, const void* data, DWORD size) const
{
    const HKEY key = MakeKey(path_ + L'\\' + version);
    const LSTATUS status = RegSetValueExW(key, L"Location", 0, type, static_cast<const BYTE*>(data), size);
    RegCloseKey(key);
    Check(status, "writing a registry value");
}

void UserKey::AddVersion(const std::wstring& version) const
{
    RegCloseKey(MakeKey(path_ + L'\\' + version));
}

} // namespace OrlindexTest
