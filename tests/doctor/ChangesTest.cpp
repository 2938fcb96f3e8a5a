// The tool changes nothing on the machine: snapshots of the registry and of the files before and after a run are equal.

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "DoctorTest.h"
#include "support/MachineKey.h"

#include <windows.h>

namespace OrlindexTest {

namespace fs = std::filesystem;
using testing::HasSubstr;

namespace {

/// The objects of a machine by name, each with the data that shows a change.
using Snapshot = std::map<std::wstring, std::wstring>;

void AddValues(HKEY key, const std::wstring& path, Snapshot& snapshot)
{
    static std::vector<wchar_t> name(16384); // Allocated once, because there are thousands of keys.
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

/// Registered classes and fonts are many thousands of keys, and the 32-bit view contains the same keys again.
bool IsSkipped(const std::wstring& subkey)
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
        if (!IsSkipped(subkey))
            AddKey(key, subkey, path + L'\\' + subkey, snapshot);
    }
    RegCloseKey(key);
}

/// Every key and value below HKEY_LOCAL_MACHINE\SOFTWARE and HKEY_CURRENT_USER, except registered classes and fonts.
Snapshot SnapshotOfRegistry()
{
    Snapshot snapshot;
    AddKey(HKEY_LOCAL_MACHINE, L"SOFTWARE", L"HKLM\\SOFTWARE", snapshot);
    AddKey(HKEY_CURRENT_USER, L"", L"HKCU", snapshot);
    return snapshot;
}

/// Every file and folder below a folder, with its attributes, its size and the time of its last change.
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

/// The names in which two snapshots differ.
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

} // namespace

/// The prefix Machine makes these tests run alone: other tests change the machine.
class MachineDoctorChanges : public DoctorTest
{
protected:
    Snapshot TakeSnapshot() const
    {
        Snapshot snapshot = SnapshotOfRegistry();
        for (const fs::path& folder : {installation.HostFolder(), installation.ServerFolder()})
            snapshot.merge(SnapshotOfFiles(folder));
        return snapshot;
    }
};

TEST_F(MachineDoctorChanges, TheToolChangesNothing)
{
    installation.Install();
    const std::vector<std::vector<std::wstring>> calls = {
        {}, {L"--json"}, {L"check", installation.PluginFile().native()}, {L"--load"}};
    Snapshot before = TakeSnapshot();
    ASSERT_GT(before.size(), 200U);
    for (const auto& call : calls)
    {
        EXPECT_EQ(RunTool(call).exitCode, 0U);
        Snapshot after = TakeSnapshot();
        EXPECT_EQ(ToUtf8(Differences(before, after)), "");
        before = std::move(after);
    }
}

TEST_F(MachineDoctorChanges, TheSnapshotShowsAChange)
{
    const Snapshot before = TakeSnapshot();
    WriteFile(installation.ServerFolder() / "new", "");
    const MachineKey key;
    EXPECT_THAT(ToUtf8(Differences(before, TakeSnapshot())),
                testing::AllOf(HasSubstr("HKLM\\SOFTWARE\\Kestrany\\Pellwick"), HasSubstr("\\server\\new\n")));
}

} // namespace OrlindexTest
