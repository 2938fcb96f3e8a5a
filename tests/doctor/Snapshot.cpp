#include "Snapshot.h"

#include <vector>

#include <windows.h>

namespace OrlindexTest {

namespace fs = std::filesystem;

namespace {

void AddValues(HKEY key, const std::wstring& path, Snapshot& snapshot)
{
    static std::vector<wchar_t> name(16384); // Allocated once: there are thousands of keys.
    static std::vector<BYTE> data(1 << 20);
    for (DWORD index = 0;; ++index)
    {
        auto nameLength = static_cast<DWORD>(name.size());
        auto size = static_cast<DWORD>(data.size());
        DWORD type = 0;
        const LSTATUS status = RegEnumValueW(key, index, name.data(), &nameLength, nullptr, &type, data.data(), &size);
        if (status != ERROR_SUCCESS && status != ERROR_MORE_DATA)
            return;
        std::wstring value = std::to_wstring(status) + L' ' + std::to_wstring(type) + L' ';
        if (status == ERROR_SUCCESS)
            value.append(data.begin(), data.begin() + size);
        snapshot[path + L" -> " + std::wstring(name.data(), nameLength)] = value;
    }
}

/// The registered classes and fonts are many thousands of keys, and the 32-bit view shows the same keys once more.
bool IsLeftOut(const std::wstring& subkey)
{
    return subkey == L"Classes" || subkey == L"Wow6432Node" || subkey == L"Fonts";
}

void AddKey(HKEY parent, const std::wstring& name, const std::wstring& path, Snapshot& snapshot)
{
    HKEY key = nullptr;
    const LSTATUS status = RegOpenKeyExW(parent, name.c_str(), REG_OPTION_OPEN_LINK, KEY_READ, &key);
    snapshot[path] = std::to_wstring(status);
    if (status != ERROR_SUCCESS)
        return;
    AddValues(key, path, snapshot);
    for (DWORD index = 0;; ++index)
    {
        wchar_t subkey[256] = {};
        DWORD length = 256;
        if (RegEnumKeyExW(key, index, subkey, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
            break;
        if (!IsLeftOut(subkey))
            AddKey(key, subkey, path + L'\\' + subkey, snapshot);
    }
    RegCloseKey(key);
}

} // namespace

Snapshot SnapshotOfRegistry()
{
    Snapshot snapshot;
    AddKey(HKEY_LOCAL_MACHINE, L"SOFTWARE", L"HKLM\\SOFTWARE", snapshot);
    AddKey(HKEY_CURRENT_USER, L"", L"HKCU", snapshot);
    return snapshot;
}

Snapshot SnapshotOfFiles(const fs::path& folder)
{
    Snapshot snapshot;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder))
    {
        WIN32_FILE_ATTRIBUTE_DATA data{};
        GetFileAttributesExW(entry.path().c_str(), GetFileExInfoStandard, &data);
        snapshot[entry.path().native()] =
            std::to_wstring(data.dwFileAttributes) + L' ' + std::to_wstring(data.nFileSizeHigh) + L' ' +
            std::to_wstring(data.nFileSizeLow) + L' ' + std::to_wstring(data.ftLastWriteTime.dwHighDateTime) + L' ' +
            std::to_wstring(data.ftLastWriteTime.dwLowDateTime);
    }
    return snapshot;
}

std::wstring Differences(const Snapshot& before, const Snapshot& after)
{
    std::wstring names;
    const auto addMissing = [&names](const Snapshot& from, const Snapshot& in) {
        for (const auto& [name, value] : from)
        {
            const auto other = in.find(name);
            if (other == in.end() || other->second != value)
                names += name + L'\n';
        }
    };
    addMissing(before, after);
    addMissing(after, before);
    return names;
}

} // namespace OrlindexTest
