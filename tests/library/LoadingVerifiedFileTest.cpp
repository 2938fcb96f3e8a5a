// Between verification and load: the loaded file is the verified one.

#include "LoadingSupport.h"
#include "support/Handle.h"
#include "support/PlatformImports.h"

namespace OrlindexTest {

using testing::AllOf;
using testing::AnyOf;
using testing::Contains;
using testing::Each;
using testing::SizeIs;

namespace {

Handle OpenForWriting(const std::filesystem::path& file)
{
    return Handle(CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                              nullptr, OPEN_EXISTING, 0, nullptr));
}

} // namespace

class LoadingVerifiedFile : public Loading
{
protected:
    /// Makes the configured path a link to another file for those that open it; all other calls see the file that is
    /// there.
    static CreateFileDouble::Behaviour LeadingTo(const std::filesystem::path& link, const std::filesystem::path& file)
    {
        return [link, file](LPCWSTR path, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security,
                            DWORD disposition, DWORD flags, HANDLE model) {
            return CreateFileDouble::Original(path == link.native() ? file.c_str() : path, access, sharing, security,
                                              disposition, flags, model);
        };
    }

    /// A build of the test plugin in its own folder.
    std::filesystem::path InstallElsewhere(const std::string& plugin, const char* name = "Real.dll") const
    {
        const std::filesystem::path file = installation.MakeFolder("elsewhere") / name;
        installation.CopyPlugin(plugin, file);
        return file;
    }
};

TEST_F(LoadingVerifiedFile, NobodyCanWriteOrReplaceTheFileBetweenVerificationAndLoading)
{
    installation.Install();
    DWORD writing = 0;
    DWORD replacing = 0;
    const LoadLibraryExDouble attack([&](LPCWSTR path, HANDLE reserved, DWORD flags) {
        const Handle file = OpenForWriting(path);
        writing = file.get() == INVALID_HANDLE_VALUE ? GetLastError() : 0;
        replacing = MoveFileW(path, (installation.ServerFolder() / "moved.dll").c_str()) ? 0 : GetLastError();
        return LoadLibraryExDouble::Original(path, reserved, flags);
    });
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_EQ(writing, static_cast<DWORD>(ERROR_SHARING_VIOLATION));
    EXPECT_EQ(replacing, static_cast<DWORD>(ERROR_SHARING_VIOLATION));
}

TEST_F(LoadingVerifiedFile, AFileThatSomebodyMayStillWriteFailsWithTheSystemsText)
{
    installation.Install();
    const Handle writer = OpenForWriting(installation.PluginFile());
    ASSERT_NE(writer.get(), INVALID_HANDLE_VALUE);
    // The platform's verification also opens the file for shared reading only, and may fail before it reads the
    // signature.
    EXPECT_THAT(FailedStart(),
                AnyOf(LoadFailure(File(), ERROR_SHARING_VIOLATION), "Binary file: unknown error: " + File() + '\n'));
    EXPECT_FALSE(IsLoaded(installation.PluginFile()));
}

TEST_F(LoadingVerifiedFile, AFileThatCannotBeLockedFailsAtTheLoadEvenThoughItsSignatureIsValid)
{
    installation.Install();
    const CreateFileDouble refuse([&](LPCWSTR path, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security,
                                      DWORD disposition, DWORD flags, HANDLE model) {
        if (path == installation.PluginFile().native())
        {
            SetLastError(ERROR_SHARING_VIOLATION);
            return INVALID_HANDLE_VALUE;
        }
        return CreateFileDouble::Original(path, access, sharing, security, disposition, flags, model);
    });
    EXPECT_EQ(FailedStart(), LoadFailure(File(), ERROR_SHARING_VIOLATION));
    EXPECT_FALSE(IsLoaded(installation.PluginFile()));
}

TEST_F(LoadingVerifiedFile, ARefusedFileIsNeverPassedToTheLibraryLoader)
{
    installation.Install("stranger");
    int loads = 0;
    const LoadLibraryDouble count([&loads](LPCWSTR path) {
        ++loads;
        return LoadLibraryDouble::Original(path);
    });
    const LoadLibraryExDouble countToo([&loads](LPCWSTR path, HANDLE reserved, DWORD flags) {
        ++loads;
        return LoadLibraryExDouble::Original(path, reserved, flags);
    });
    FailedStart();
    EXPECT_EQ(loads, 0);
    EXPECT_FALSE(IsLoaded(installation.PluginFile()));
}

TEST_F(LoadingVerifiedFile, AFolderSwappedUnderTheLockedFileIsNoticed)
{
    installation.Install();
    const std::filesystem::path aside = installation.ServerFolder().parent_path() / "aside";
    bool mapped = false;
    const LoadLibraryExDouble swap([&](LPCWSTR path, HANDLE file, DWORD flags) {
        // The system protects the file from being replaced, but not all folders above it.
        std::filesystem::rename(installation.ServerFolder(), aside);
        std::filesystem::create_directory(installation.ServerFolder());
        installation.CopyPlugin("unsigned", installation.PluginFile());
        const HMODULE module = LoadLibraryExDouble::Original(path, file, flags);
        mapped = module != nullptr;
        return module;
    });
    EXPECT_EQ(FailedStart(), LoadFailure(File(), ERROR_FILE_INVALID));
    EXPECT_TRUE(mapped);
    EXPECT_FALSE(IsLoaded(installation.PluginFile()));
}

TEST_F(LoadingVerifiedFile, AFileBehindALinkIsVerifiedAndLoadedByItsOwnPath)
{
    installation.Install("unsigned"); // the link's target at the next access
    const std::filesystem::path real = InstallElsewhere("good");
    const PluginControl plugin(real);
    const CreateFileDouble link(LeadingTo(installation.PluginFile(), real));
    std::vector<std::wstring> paths;
    const WinVerifyTrustDouble verify([&paths](HWND window, GUID* action, LPVOID data) {
        paths.emplace_back(static_cast<WINTRUST_DATA*>(data)->pFile->pcwszFilePath);
        return WinVerifyTrustDouble::Original(window, action, data);
    });
    const LoadLibraryExDouble first([&paths](LPCWSTR path, HANDLE reserved, DWORD flags) {
        paths.emplace_back(path);
        return LoadLibraryExDouble::Original(path, reserved, flags);
    });
    const LoadLibraryDouble second([&paths](LPCWSTR path) {
        paths.emplace_back(path);
        return LoadLibraryDouble::Original(path);
    });
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_THAT(paths, AllOf(SizeIs(4), Each(real.native())));
    EXPECT_FALSE(IsLoaded(installation.PluginFile()));
    EXPECT_THAT(plugin.Log(), Contains(LogLine{Info, "Binary file: is valid: " + File()}));
    EXPECT_THAT(plugin.Log(), Contains(LogLine{Info, "Successfully loaded client plugin module " + File()}));
}

TEST_F(LoadingVerifiedFile, ALinkThatLeadsToAnAcceptedFileDuringTheVerificationAloneIsOfNoUse)
{
    installation.Install("good");
    const std::filesystem::path evil = InstallElsewhere("unsigned");
    const CreateFileDouble before(LeadingTo(installation.PluginFile(), evil));
    int loads = 0;
    const auto after = [&](LPCWSTR path) {
        ++loads;
        return path == installation.PluginFile().native() ? evil.c_str() : path;
    };
    const LoadLibraryExDouble first([&](LPCWSTR path, HANDLE reserved, DWORD flags) {
        return LoadLibraryExDouble::Original(after(path), reserved, flags);
    });
    const LoadLibraryDouble second([&](LPCWSTR path) { return LoadLibraryDouble::Original(after(path)); });
    EXPECT_EQ(FailedStart(), "Binary file: signature is invalid: " + File() + '\n');
    EXPECT_EQ(loads, 0);
    EXPECT_FALSE(IsLoaded(evil));
}

TEST_F(LoadingVerifiedFile, ALinkToAFileWhoseNameTheLoaderWouldExtendIsRefused)
{
    installation.Install("good");
    const CreateFileDouble link(LeadingTo(installation.PluginFile(), InstallElsewhere("good", "Real")));
    EXPECT_EQ(FailedStart(), LoadFailure(File(), ERROR_BAD_PATHNAME));
}

TEST_F(LoadingVerifiedFile, AFileWhoseOwnPathIsUnknownFailsAtTheLoadEvenThoughItsSignatureIsValid)
{
    installation.Install();
    const GetFinalPathNameByHandleDouble unknown([](HANDLE, LPWSTR, DWORD, DWORD) {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return DWORD{0};
    });
    EXPECT_EQ(FailedStart(), LoadFailure(File(), ERROR_PATH_NOT_FOUND));
    EXPECT_FALSE(IsLoaded(installation.PluginFile()));
}

TEST_F(LoadingVerifiedFile, AModuleFromAnotherFileIsNotKept)
{
    installation.Install();
    const std::filesystem::path other = installation.MakeFolder("other") / "PellwickClient.dll";
    installation.CopyPlugin("good", other);
    const LoadLibraryDouble redirect([&](LPCWSTR) { return LoadLibraryDouble::Original(other.c_str()); });
    EXPECT_EQ(FailedStart(), LoadFailure(File(), ERROR_FILE_INVALID));
    EXPECT_FALSE(IsLoaded(other));
}

class LoadingReplacedFile : public LoadingVerifiedFile
{
protected:
    /// Replaces the module by another build, as an update does: a file that is in use can be renamed. The path of the
    /// mapped file is then the new name; some versions of the system do not report it, so the test does.
    void Replace(const std::string& plugin)
    {
        const std::filesystem::path aside = installation.ServerFolder() / "PellwickClient.old";
        std::filesystem::rename(installation.PluginFile(), aside);
        installation.CopyPlugin(plugin, installation.PluginFile());
        const std::wstring name = L"\\??\\" + aside.native();
        mapped_.emplace([name](HANDLE, const void*, int, void* buffer, SIZE_T size, SIZE_T*) {
            struct SystemString
            {
                USHORT bytes;
                USHORT capacity;
                wchar_t* text;
            };
            EXPECT_GE(size, sizeof(SystemString) + name.size() * sizeof(wchar_t));
            auto* const text = reinterpret_cast<wchar_t*>(static_cast<SystemString*>(buffer) + 1);
            name.copy(text, name.size());
            const auto bytes = static_cast<USHORT>(name.size() * sizeof(wchar_t));
            *static_cast<SystemString*>(buffer) = {bytes, bytes, text};
            return LONG{0};
        });
    }

private:
    std::optional<NtQueryVirtualMemoryDouble> mapped_;
};

TEST_F(LoadingReplacedFile, TheModuleInMemoryThatWasVerifiedWhenItWasLoadedGoesOnServing)
{
    PluginControl& plugin = InstallPlugin();
    plugin.Return(Client::IsLoggedIn, 1);
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    Replace("asia");
    for (int start = 0; start < 2; ++start)
    {
        plugin.ClearJournal();
        ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
        EXPECT_TRUE(IdServicesMgr::GetInstance()->IsLoggedIn());
        EXPECT_THAT(plugin.Log(), Contains(LogLine{Info, "Binary file: is valid: " + File()}));
        EXPECT_THAT(plugin.Log(), Contains(LogLine{Info, "Successfully loaded client plugin module " + File()}));
        ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    }
}

TEST_F(LoadingReplacedFile, TheNewFileIsVerifiedAllTheSame)
{
    installation.Install();
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    Replace("unsigned");
    EXPECT_EQ(IdServicesMgr::Initialize(), IdClientUnavailable);
}

TEST_F(LoadingReplacedFile, AModuleThatTheHostLoadedIsNotKeptWhereItsFileWasReplaced)
{
    InstallPlugin("unsigned"); // The test, as the host, loads it itself.
    Replace("good");
    EXPECT_EQ(FailedStart(), LoadFailure(File(), ERROR_FILE_INVALID));
}

class LoadingTwice : public LoadingVerifiedFile
{
protected:
    /// Expects a start-up to fail with the error of the load that searches the module's own directory first, and
    /// expects the plain load to be tried or not.
    void ExpectFailure(DWORD error, int plainLoads)
    {
        installation.Install();
        const LoadLibraryExDouble fail([error](LPCWSTR, HANDLE, DWORD) -> HMODULE {
            SetLastError(error);
            return nullptr;
        });
        int loads = 0;
        const LoadLibraryDouble count([&loads](LPCWSTR) -> HMODULE {
            ++loads;
            SetLastError(ERROR_MOD_NOT_FOUND);
            return nullptr;
        });
        EXPECT_EQ(FailedStart(), LoadFailure(File(), error));
        EXPECT_EQ(loads, plainLoads);
    }
};

TEST_F(LoadingTwice, ThePlainLoadDecidesWhereTheFirstFindsSomethingMissing)
{
    ExpectFailure(ERROR_MOD_NOT_FOUND, 1);
}

TEST_F(LoadingTwice, AnyOtherErrorOfTheFirstIsLoggedAndThePlainLoadIsNotTried)
{
    ExpectFailure(ERROR_DLL_INIT_FAILED, 0);
}

TEST_F(LoadingTwice, AFirstLoadThatFailsWithoutErrorIsNotTriedAgain)
{
    ExpectFailure(ERROR_SUCCESS, 0);
}

} // namespace OrlindexTest
