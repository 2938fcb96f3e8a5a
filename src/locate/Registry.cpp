#include "locate/Registry.h"

#include <algorithm>
#include <boost/algorithm/string/predicate.hpp>
#include <locale>
#include <utility>

#include "base/Platform.h"
#include "base/Text.h"
#include "base/Versions.h"

namespace Kestrany::IdentityServices {
namespace {

// In bytes; a longer location counts as missing. The two limits differ on purpose: both are part of the contract.
constexpr DWORD versionedLocationLimit = 4090;
constexpr DWORD unversionedLocationLimit = 1024;

constexpr wchar_t keyBelowLocalMachine[] = L"SOFTWARE\\Kestrany\\Pellwick";

struct KeyPath
{
    HKEY root;
    std::wstring subkey;
};

struct InstalledVersion
{
    std::wstring subkey;
    VersionParts version;
    std::string location;
};

std::optional<KeyPath> ParseKeyText(std::wstring keyText)
{
    std::replace(keyText.begin(), keyText.end(), L'/', L'\\');
    const std::size_t separator = keyText.find(L'\\');
    const std::wstring root = keyText.substr(0, separator);
    const std::wstring subkey = separator == std::wstring::npos ? std::wstring() : keyText.substr(separator + 1);
    const std::locale& neutral = std::locale::classic();
    if (boost::algorithm::iequals(root, L"HKEY_CURRENT_USER", neutral))
        return KeyPath{HKEY_CURRENT_USER, subkey};
    if (boost::algorithm::iequals(root, L"HKEY_LOCAL_MACHINE", neutral))
        return KeyPath{HKEY_LOCAL_MACHINE, subkey};
    return std::nullopt;
}

RegistryKeyFinding ReadLocation(std::wstring name, const RegistryKey& key, DWORD byteLimit)
{
    RegistryKeyFinding finding = {std::move(name), key.Status(), std::nullopt, std::nullopt};
    if (!key.IsOpen())
        return finding;
    RegistryKey::TextValue value = key.ReadText(LocationValueName, byteLimit);
    finding.read = value.status;
    finding.location = std::move(value.text);
    return finding;
}

/// If versions are equal, such as "1.0" and "1.0.", the first one read gives the version and the last one read gives
/// the location.
void KeepLatest(std::optional<InstalledVersion>& latest, InstalledVersion installed)
{
    if (latest)
    {
        const int order = CompareVersions(installed.version, latest->version);
        if (order < 0)
            return;
        if (order == 0)
            installed.version = std::move(latest->version);
    }
    latest = std::move(installed);
}

} // namespace

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
    return status == ERROR_SUCCESS ? count : 0; // not covered: The query does not fail for a key that is open.
}

std::optional<std::wstring> RegistryKey::SubkeyName(DWORD index) const
{
    wchar_t name[255] = {};
    DWORD length = 255;
    if (RegEnumKeyExW(key_, index, name, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
        return std::nullopt;
    return std::wstring(name, length);
}

RegistryKey::TextValue RegistryKey::ReadText(const wchar_t* valueName, DWORD byteLimit) const
{
    std::wstring buffer(byteLimit / sizeof(wchar_t), L'\0');
    DWORD type = REG_NONE;
    DWORD size = byteLimit;
    const LSTATUS status =
        RegQueryValueExW(key_, valueName, nullptr, &type, reinterpret_cast<BYTE*>(buffer.data()), &size);
    if (status != ERROR_SUCCESS)
        return {status, std::nullopt};
    if (type != REG_SZ && type != REG_EXPAND_SZ)
        return {ERROR_DATATYPE_MISMATCH, std::nullopt};
    buffer.resize(std::min(size, byteLimit) / sizeof(wchar_t));
    return {status, buffer.substr(0, buffer.find(L'\0'))};
}

LatestRegistryLocation GetLatestRegistryLocation(const std::wstring& keyText)
{
    LatestRegistryLocation result;
    const std::optional<KeyPath> path = ParseKeyText(keyText);
    if (!path)
        return result;
    const RegistryKey key(path->root, path->subkey, KEY_READ);
    if (!key.IsOpen())
        return result;

    // One pass that keeps the highest, no sorting: the comparison is not transitive for unusual names.
    std::optional<InstalledVersion> latest;
    const DWORD count = key.SubkeyCount();
    for (DWORD index = 0; index < count; ++index)
    {
        const std::optional<std::wstring> name = key.SubkeyName(index);
        if (!name)
            continue;
        const RegistryKey subkey(key.Get(), *name, KEY_QUERY_VALUE);
        result.keys.push_back(ReadLocation(*name, subkey, versionedLocationLimit));
        if (const std::optional<std::wstring>& location = result.keys.back().location)
            KeepLatest(latest, {*name, SplitVersion(Narrow(*name)), Narrow(*location)});
    }
    if (!latest)
        return result;
    result.found = true;
    result.version = JoinVersion(latest->version);
    result.location = std::move(latest->location);
    result.key = keyText + L'\\' + latest->subkey;
    return result;
}

RegistryKeyFinding ReadUnversionedLocation()
{
    const RegistryKey key(HKEY_LOCAL_MACHINE, keyBelowLocalMachine, KEY_READ);
    return ReadLocation(ServerApplicationKey, key, unversionedLocationLimit);
}

} // namespace Kestrany::IdentityServices
