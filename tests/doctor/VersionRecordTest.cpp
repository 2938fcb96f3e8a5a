// Version records of real files: of valid ones the tool reads what the platform reads, of damaged ones nothing else.

#include <iterator>
#include <optional>
#include <stdexcept>
#include <vector>

#include "DamagedModule.h"
#include "DoctorTest.h"
#include "doctor/VersionRecord.h"

#include <windows.h>

#include <psapi.h>

namespace OrlindexTest {

namespace fs = std::filesystem;
using Orlindex::Doctor::ReadVersionRecord;
using Orlindex::Doctor::VersionRecord;
using testing::StartsWith;

namespace {

/// A file's version record, read by the platform's own functions, which are safe for valid files.
class PlatformRecord
{
public:
    explicit PlatformRecord(const fs::path& file)
    {
        DWORD ignored = 0;
        bytes_.resize(GetFileVersionInfoSizeW(file.c_str(), &ignored));
        if (!bytes_.empty() && !GetFileVersionInfoW(file.c_str(), 0, static_cast<DWORD>(bytes_.size()), bytes_.data()))
            bytes_.clear();
        const auto* const translation = static_cast<const WORD*>(Query(L"\\VarFileInfo\\Translation"));
        wchar_t path[64] = L"\\StringFileInfo\\040904B0\\";
        if (translation)
            swprintf(path, std::size(path), L"\\StringFileInfo\\%04X%04X\\", translation[0], translation[1]);
        texts_ = path;
    }

    bool IsThere() const { return !bytes_.empty(); }

    std::string Text(const std::wstring& name) const
    {
        const auto* const text = static_cast<const wchar_t*>(Query(texts_ + name));
        return text ? Utf8(std::wstring(text)) : std::string();
    }

    std::string FileVersion() const
    {
        const auto* const fixed = static_cast<const VS_FIXEDFILEINFO*>(Query(L"\\"));
        if (!fixed)
            return {};
        return std::to_string(HIWORD(fixed->dwFileVersionMS)) + '.' + std::to_string(LOWORD(fixed->dwFileVersionMS)) +
               '.' + std::to_string(HIWORD(fixed->dwFileVersionLS)) + '.' +
               std::to_string(LOWORD(fixed->dwFileVersionLS));
    }

private:
    const void* Query(const std::wstring& path) const
    {
        void* value = nullptr;
        UINT length = 0;
        if (bytes_.empty() || !VerQueryValueW(bytes_.data(), path.c_str(), &value, &length) || length == 0)
            return nullptr;
        return value;
    }

    std::vector<BYTE> bytes_;
    std::wstring texts_;
};

/// The largest memory of this process so far, in bytes.
std::size_t PeakMemory()
{
    PROCESS_MEMORY_COUNTERS counters = {};
    counters.cb = sizeof counters;
    if (!GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters))
        throw std::runtime_error("the memory of this process is not known");
    return counters.PeakWorkingSetSize;
}

/// DLLs of the system, each with a record from the resource compiler of its vendor.
std::vector<fs::path> SystemLibraries()
{
    wchar_t folder[MAX_PATH] = {};
    GetSystemDirectoryW(folder, MAX_PATH);
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
        if (entry.path().extension() == L".dll" && entry.is_regular_file())
            files.push_back(entry.path());
    return files;
}

} // namespace

class DoctorVersionRecord : public DoctorTest
{
protected:
    fs::path Library() const { return installation.HostFolder() / "Orlindex.dll"; }

    /// Expects the record that the platform reads.
    static void ExpectSame(const fs::path& file)
    {
        const PlatformRecord platform(file);
        const auto record = ReadVersionRecord(file.native());
        ASSERT_EQ(record.has_value(), platform.IsThere()) << Utf8(file);
        if (!record)
            return;
        EXPECT_EQ(record->fileVersion, platform.FileVersion()) << Utf8(file);
        EXPECT_EQ(record->company, platform.Text(L"CompanyName")) << Utf8(file);
        EXPECT_EQ(record->description, platform.Text(L"FileDescription")) << Utf8(file);
        EXPECT_EQ(record->specialBuild, platform.Text(L"SpecialBuild")) << Utf8(file);
        EXPECT_EQ(record->pinnedRoot, platform.Text(L"PinnedRootSha256")) << Utf8(file);
        EXPECT_EQ(record->signers, platform.Text(L"AcceptedSigners")) << Utf8(file);
    }

    std::optional<VersionRecord> RecordWith(ResourceDamage damage) const
    {
        const fs::path file = installation.MakeFolder("damaged") / "Orlindex.dll";
        WriteFile(file, WithDamage(ReadFile(Library()), damage));
        return ReadVersionRecord(file.native());
    }
};

TEST_F(DoctorVersionRecord, TheLibrarysSaysWhatItTrusts)
{
    const auto record = ReadVersionRecord(Library().native());
    ASSERT_TRUE(record);
    EXPECT_EQ(record->fileVersion, "1.11.13.3");
    EXPECT_EQ(record->company, "Kestrany, Inc.");
    EXPECT_THAT(record->description, StartsWith("Client library for single sign-on"));
    EXPECT_EQ(record->specialBuild, "development root");
    EXPECT_EQ(record->pinnedRoot.size(), 64U);
    EXPECT_EQ(record->signers, "Kestrany, Inc.;Kestrany Asia Pte");
}

TEST_F(DoctorVersionRecord, OfASoundFileItIsWhatThePlatformReads)
{
    for (const fs::path& file : {Library(), Tool(), installation.ServerFolder() / "PellwickClient.dll"})
        ExpectSame(file);
    std::size_t compared = 0;
    for (const fs::path& file : SystemLibraries())
    {
        ExpectSame(file);
        ++compared;
    }
    EXPECT_GT(compared, 50U);
}

TEST_F(DoctorVersionRecord, ADamagedSizeOrAddressIsNoRecord)
{
    EXPECT_FALSE(RecordWith(ResourceDamage::Size));
    EXPECT_FALSE(RecordWith(ResourceDamage::Address));
}

TEST_F(DoctorVersionRecord, ASectionThatClaimsToFillTheAddressSpaceIsReadFromTheFile)
{
    const auto record = RecordWith(ResourceDamage::SectionSize);
    ASSERT_TRUE(record);
    EXPECT_EQ(record->fileVersion, "1.11.13.3");
    EXPECT_LT(PeakMemory(), std::size_t{1} << 30) << "the section claims four times as much";
}

TEST_F(DoctorVersionRecord, AFileThatIsNoModuleOrCannotBeReadHasNone)
{
    const fs::path file = installation.MakeFolder("other") / "file";
    EXPECT_FALSE(ReadVersionRecord(file.native()));
    WriteFile(file, "");
    EXPECT_FALSE(ReadVersionRecord(file.native()));
    WriteFile(file, "no module");
    EXPECT_FALSE(ReadVersionRecord(file.native()));
}

} // namespace OrlindexTest
