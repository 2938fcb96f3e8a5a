// The module's file is locked before its verification. A module is unloaded if its file cannot be identified.

#include <string_view>
#include <utility>
#include <vector>

#include "LoadingSupport.h"
#include "support/Count.h"
#include "support/Handle.h"
#include "support/PlatformImports.h"

namespace OrlindexTest {

using testing::Each;
using testing::SizeIs;

namespace {

constexpr auto NoResources = static_cast<LONG>(0xC000009A);

/// The system's result for an attempt to write a file.
DWORD TryToWrite(const std::filesystem::path& file)
{
    const Handle opened(CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, 0, nullptr));
    return opened.get() == INVALID_HANDLE_VALUE ? GetLastError() : ERROR_SUCCESS;
}

/// The same for an attempt to rename the file; if that works, the name is restored.
DWORD TryToReplace(const std::filesystem::path& file)
{
    const std::filesystem::path aside = file.native() + L".aside";
    if (!MoveFileW(file.c_str(), aside.c_str()))
        return GetLastError();
    MoveFileW(aside.c_str(), file.c_str());
    return ERROR_SUCCESS;
}

} // namespace

class LoadingLockedFile : public Loading
{
protected:
    /// The first file that is asked for its final path is the locked one, the second the mapped one.
    static GetFinalPathNameByHandleDouble::Behaviour OtherPathForTheMappedFile()
    {
        return [first = true](HANDLE file, LPWSTR path, DWORD size, DWORD form) mutable {
            const DWORD length = GetFinalPathNameByHandleDouble::Original(file, path, size, form);
            if (!std::exchange(first, false) && length < size)
                path[length - 1] = L'_';
            return length;
        };
    }

    void ExpectRefusedAsAnotherFile()
    {
        EXPECT_EQ(FailedStart(), LoadFailure(File(), ERROR_FILE_INVALID));
        EXPECT_FALSE(IsLoaded(installation.PluginFile()));
    }
};

TEST_F(LoadingLockedFile, NobodyCanWriteOrReplaceTheFileJustBeforeOrAfterItsVerification)
{
    installation.Install();
    std::vector<DWORD> attempts;
    const auto attack = [&] {
        attempts.push_back(TryToWrite(installation.PluginFile()));
        attempts.push_back(TryToReplace(installation.PluginFile()));
    };
    const WinVerifyTrustDouble verification([&](HWND window, GUID* action, LPVOID data) {
        const bool verifies = static_cast<const WINTRUST_DATA*>(data)->dwStateAction == WTD_STATEACTION_VERIFY;
        if (verifies)
            attack();
        const LONG result = WinVerifyTrustDouble::Original(window, action, data);
        if (verifies)
            attack();
        return result;
    });
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_THAT(attempts, SizeIs(4));
    EXPECT_THAT(attempts, Each(static_cast<DWORD>(ERROR_SHARING_VIOLATION)));
    PrintCount("attempts to change a module around its verification", static_cast<long long>(attempts.size()));
}

/// Then neither the verified file nor the loaded one is known. That must not count as the same file.
TEST_F(LoadingLockedFile, AModuleIsNotKeptIfTheSystemDoesNotSayWhichFileWasVerified)
{
    installation.Install();
    const NtQueryInformationFileDouble fail([](HANDLE, void*, void*, ULONG, int) { return NoResources; });
    ExpectRefusedAsAnotherFile();
}

TEST_F(LoadingLockedFile, AModuleIsKeptIfItsFileHasAnotherPathOnTheSameVolume)
{
    installation.Install();
    const GetFinalPathNameByHandleDouble another(OtherPathForTheMappedFile());
    int volumes = 0;
    const GetFileInformationByHandleDouble count([&volumes](HANDLE file, LPBY_HANDLE_FILE_INFORMATION information) {
        ++volumes;
        return GetFileInformationByHandleDouble::Original(file, information);
    });
    EXPECT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_EQ(volumes, 2);
}

TEST_F(LoadingLockedFile, AModuleIsNotKeptIfTheFileWithItsIndexIsOnAnotherVolume)
{
    installation.Install();
    const GetFinalPathNameByHandleDouble another(OtherPathForTheMappedFile());
    DWORD volume = 0;
    const GetFileInformationByHandleDouble volumes([&volume](HANDLE, LPBY_HANDLE_FILE_INFORMATION information) {
        *information = {};
        information->dwVolumeSerialNumber = ++volume;
        return TRUE;
    });
    ExpectRefusedAsAnotherFile();
}

TEST_F(LoadingLockedFile, AModuleIsNotKeptIfNeitherPathNorVolumeIdentifyItsFile)
{
    installation.Install();
    const GetFinalPathNameByHandleDouble another(OtherPathForTheMappedFile());
    const GetFileInformationByHandleDouble fail([](HANDLE, LPBY_HANDLE_FILE_INFORMATION) {
        SetLastError(ERROR_INVALID_FUNCTION);
        return FALSE;
    });
    ExpectRefusedAsAnotherFile();
}

TEST_F(LoadingLockedFile, AModuleIsNotKeptIfTheSystemDoesNotSayWhichFileItWasLoadedFrom)
{
    installation.Install();
    const NtQueryVirtualMemoryDouble fail([](HANDLE, const void*, int, void*, SIZE_T, SIZE_T*) { return NoResources; });
    ExpectRefusedAsAnotherFile();
}

TEST_F(LoadingLockedFile, AModuleIsNotKeptIfTheFileThatItWasLoadedFromHasNoName)
{
    installation.Install();
    const NtQueryVirtualMemoryDouble returnNothing(
        [](HANDLE, const void*, int, void*, SIZE_T, SIZE_T*) { return LONG{0}; });
    ExpectRefusedAsAnotherFile();
}

TEST_F(LoadingLockedFile, AModuleIsNotKeptIfTheFileThatItWasLoadedFromCannotBeOpened)
{
    installation.Install();
    const CreateFileDouble refuse([](LPCWSTR path, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security,
                                     DWORD disposition, DWORD flags, HANDLE model) {
        const std::wstring_view mapped = L"\\\\?\\"; // The form of the path of a mapped file.
        if (std::wstring_view(path).substr(0, mapped.size()) == mapped)
        {
            SetLastError(ERROR_ACCESS_DENIED);
            return INVALID_HANDLE_VALUE;
        }
        return CreateFileDouble::Original(path, access, sharing, security, disposition, flags, model);
    });
    ExpectRefusedAsAnotherFile();
}

} // namespace OrlindexTest
