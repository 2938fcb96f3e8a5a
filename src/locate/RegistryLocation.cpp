#include "locate/RegistryLocation.h"

#include <algorithm>
#include <boost/algorithm/string/predicate.hpp>
#include <locale>
#include <optional>
#include <utility>

#include "base/TextConversion.h"
#include "base/Versions.h"
#include "load/StartObserver.h"
#include "locate/RegistryKey.h"

namespace Kestrany::IdentityServices {
namespace {

constexpr DWORD locationByteLimit = 4090; ///< A longer one counts as missing.

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

std::optional<InstalledVersion> ReadInstalledVersion(const RegistryKey& key, DWORD index, StartObserver* observer)
{
    const std::optional<std::wstring> name = key.SubkeyName(index);
    if (!name)
        return std::nullopt;
    const RegistryKey subkey(key.Get(), *name, KEY_QUERY_VALUE);
    LSTATUS read = ERROR_SUCCESS;
    const auto location = subkey.IsOpen() ? subkey.ReadText(LocationValueName, locationByteLimit, &read) : std::nullopt;
    if (observer)
        observer->OnRegistryKey({*name, subkey.Status(), subkey.IsOpen() ? std::optional(read) : std::nullopt,
                                 location.value_or(std::wstring())});
    if (!location)
        return std::nullopt;
    return InstalledVersion{*name, SplitVersion(Narrow(*name)), Narrow(*location)};
}

/// Of equal versions, such as "1.0" and "1.0.", the first read names the version and the last read gives the location.
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

bool GetLatestRegistryLocation(const std::wstring& keyText, std::string& version, std::string& location,
                               StartObserver* observer)
{
    const std::optional<KeyPath> path = ParseKeyText(keyText);
    if (!path)
        return false;
    const RegistryKey key(path->root, path->subkey, KEY_READ);
    if (!key.IsOpen())
        return false;

    // One pass that keeps the greatest: the comparison is not transitive for odd names, so nothing is sorted by it.
    std::optional<InstalledVersion> latest;
    const DWORD count = key.SubkeyCount();
    for (DWORD index = 0; index < count; ++index)
    {
        if (std::optional<InstalledVersion> installed = ReadInstalledVersion(key, index, observer))
            KeepLatest(latest, std::move(*installed));
    }
    if (!latest)
        return false;
    version = JoinVersion(latest->version);
    location = std::move(latest->location);
    if (observer)
        observer->OnRegistryChoice(keyText + L'\\' + latest->subkey, Widen(location));
    return true;
}

} // namespace Kestrany::IdentityServices
