// Locked files: the path by which one is verified and loaded.

#include <algorithm>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>
#include <windows.h>

#include "Imports.h"
#include "base/Paths.h"
#include "load/LockedFile.h"
#include "support/Installation.h"
#include "support/PlatformImports.h"
#include "support/Text.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;

namespace {

constexpr DWORD NormalizedName = 0;
constexpr DWORD OpenedName = 8;
constexpr DWORD NormalizedNameOnVolume = 1;

} // namespace

class LockedFiles : public testing::Test
{
protected:
    void SetUp() override { WriteFile(file, "content"); }

    /// The path of a file that was opened as `given`, if its final path is `own`.
    std::wstring PathOf(const std::wstring& own, const std::wstring& given = L"C:\\given.dll") const
    {
        const CreateFileDouble open(
            [this](LPCWSTR, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security, DWORD disposition, DWORD flags,
                   HANDLE model) {
                return CreateFileDouble::Original(file.c_str(), access, sharing, security, disposition, flags, model);
            },
            Executable());
        const GetFinalPathNameByHandleDouble name(
            [&own](HANDLE, LPWSTR path, DWORD size, DWORD) {
                if (size <= own.size())
                    return static_cast<DWORD>(own.size() + 1);
                std::copy_n(own.c_str(), own.size() + 1, path);
                return static_cast<DWORD>(own.size());
            },
            Executable());
        const LockedFile locked(given);
        EXPECT_TRUE(locked.IsLocked());
        EXPECT_EQ(FindModulePathDefect(locked.Path()), std::nullopt);
        return locked.Path();
    }

    const Installation installation;
    const std::filesystem::path file = installation.HostFolder() / "locked.dll";
};

TEST_F(LockedFiles, NobodyMayWriteOrRenameALockedFile)
{
    const LockedFile locked(file.native());
    EXPECT_TRUE(locked.IsLocked());
    EXPECT_EQ(locked.Path(), file.native());
    EXPECT_FALSE(MoveFileW(file.c_str(), (installation.HostFolder() / "moved.dll").c_str()));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SHARING_VIOLATION));
}

TEST_F(LockedFiles, AMissingFileIsNotLockedAndKeepsItsPath)
{
    const std::wstring missing = (installation.HostFolder() / "missing.dll").native();
    const LockedFile locked(missing);
    EXPECT_FALSE(locked.IsLocked());
    EXPECT_EQ(locked.Error(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(locked.Path(), missing);
}

TEST_F(LockedFiles, TheFinalPathIsPlainIfThatMeansTheSame)
{
    EXPECT_EQ(PathOf(L"\\\\?\\C:\\folder\\file.dll"), L"C:\\folder\\file.dll");
    EXPECT_EQ(PathOf(L"\\\\?\\UNC\\server\\share\\file.dll"), L"\\\\server\\share\\file.dll");
    EXPECT_EQ(PathOf(L"C:\\folder\\file.dll"), L"C:\\folder\\file.dll");
}

TEST_F(LockedFiles, TheFinalPathStaysLiteralIfAPlainOneMeansAnotherFile)
{
    for (const wchar_t* own : {L"\\\\?\\C:\\folder.\\file.dll", L"\\\\?\\C:\\folder/file.dll",
                               L"\\\\?\\Volume{0b3f7e6c-0000-0000-0000-000000000000}\\file.dll"})
        EXPECT_EQ(PathOf(own), own);
    // The configured path leads there through a link that has the name without the point.
    EXPECT_EQ(PathOf(L"\\\\?\\C:\\folder.\\file.dll", L"C:\\folder.\\file.dll"), L"\\\\?\\C:\\folder.\\file.dll");
}

TEST_F(LockedFiles, ALongPathIsPlainOnlyIfItWasGivenSo)
{
    const auto pathOfLength = [](std::size_t length) { return L"C:\\" + std::wstring(length - 7, L'n') + L".dll"; };
    EXPECT_EQ(PathOf(L"\\\\?\\" + pathOfLength(259)), pathOfLength(259));
    EXPECT_EQ(PathOf(L"\\\\?\\" + pathOfLength(260)), L"\\\\?\\" + pathOfLength(260));
    EXPECT_EQ(PathOf(L"\\\\?\\" + pathOfLength(260), pathOfLength(260)), pathOfLength(260));
}

TEST_F(LockedFiles, WithoutANormalizedNameTheOpenedNameIsUsed)
{
    const GetFinalPathNameByHandleDouble name(
        [](HANDLE handle, LPWSTR path, DWORD size, DWORD form) {
            if (form != NormalizedName)
                return GetFinalPathNameByHandleDouble::Original(handle, path, size, form);
            SetLastError(ERROR_ACCESS_DENIED);
            return DWORD{0};
        },
        Executable());
    const LockedFile locked(file.native());
    EXPECT_TRUE(locked.IsLocked());
    EXPECT_EQ(locked.Path(), file.native());
}

TEST_F(LockedFiles, OnAVolumeWithoutALetterTheVolumeNameIsUsed)
{
    constexpr wchar_t own[] = L"\\\\?\\Volume{0b3f7e6c-0000-0000-0000-000000000000}\\file.dll";
    const GetFinalPathNameByHandleDouble name(
        [&own](HANDLE, LPWSTR path, DWORD, DWORD form) {
            SetLastError(ERROR_PATH_NOT_FOUND);
            if (form != NormalizedNameOnVolume)
                return DWORD{0};
            std::copy(std::begin(own), std::end(own), path);
            return static_cast<DWORD>(std::size(own) - 1);
        },
        Executable());
    const LockedFile locked(file.native());
    EXPECT_TRUE(locked.IsLocked());
    EXPECT_EQ(locked.Path(), own);
}

TEST_F(LockedFiles, AFileWithoutAFinalPathIsNotLocked)
{
    // No name, one that needs a larger buffer each time, and two that are longer than the maximum.
    for (const DWORD length : {0U, 32767U, 32768U, 40000U})
    {
        std::vector<DWORD> forms;
        const GetFinalPathNameByHandleDouble name(
            [&](HANDLE, LPWSTR, DWORD size, DWORD form) {
                if (forms.empty() || forms.back() != form)
                    forms.push_back(form);
                SetLastError(length > 0 ? ERROR_SUCCESS : ERROR_PATH_NOT_FOUND);
                return length > 0 ? std::max<DWORD>(length, size) : 0;
            },
            Executable());
        const LockedFile locked(file.native());
        EXPECT_FALSE(locked.IsLocked());
        EXPECT_EQ(locked.Error(), static_cast<DWORD>(length > 0 ? ERROR_FILENAME_EXCED_RANGE : ERROR_PATH_NOT_FOUND));
        EXPECT_EQ(locked.Path(), file.native());
        EXPECT_EQ(forms, (std::vector<DWORD>{NormalizedName, OpenedName, NormalizedNameOnVolume}));
    }
}

} // namespace OrlindexTest
