// Between verification and loading: what is loaded is the file that was verified, and nothing else.

#include "LoadingSupport.h"
#include "SystemText.h"
#include "TrustDoubles.h"
#include "support/FileImports.h"
#include "support/Handle.h"

namespace OrlindexTest {

using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::EndsWith;
using testing::HasSubstr;
using testing::SizeIs;

namespace {

struct LoadLibraryExImport
{
    static constexpr char Name[] = "LoadLibraryExW";
    using Type = decltype(LoadLibraryExW);
};

using LoadLibraryExDouble = ImportDouble<LoadLibraryExImport>;

Handle OpenForWriting(const std::filesystem::path& file)
{
    return Handle(CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                              nullptr, OPEN_EXISTING, 0, nullptr));
}

} // namespace

class LoadingVerifiedFile : public Loading
{
protected:
    /// Makes the configured path a link to another file for whoever opens it; for the rest it is what lies there.
    static CreateFileDouble::Behaviour LeadingTo(const std::filesystem::path& link, const std::filesystem::path& file)
    {
        return [link, file](LPCWSTR path, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security,
                            DWORD disposition, DWORD flags, HANDLE model) {
            return CreateFileDouble::Original(path == link.native() ? file.c_str() : path, access, sharing, security,
                                              disposition, flags, model);
        };
    }

    /// A build of the test plugin in a folder of its own.
    std::filesystem::path InstallElsewhere(const std::string& plugin, const char* name = "Real.dll") const
    {
        const std::filesystem::path file = site.MakeFolder("elsewhere") / name;
        site.CopyPlugin(plugin, file);
        return file;
    }

    std::string OtherFileMessage() const
    {
        return "Client plugin module " + File() + " was loaded from another file than the one verified\n";
    }
};

TEST_F(LoadingVerifiedFile, NobodyCanWriteOrReplaceTheFileBetweenVerificationAndLoading)
{
    site.Install();
    DWORD writing = 0;
    DWORD replacing = 0;
    const LoadLibraryExDouble attack([&](LPCWSTR path, HANDLE reserved, DWORD flags) {
        const Handle file = OpenForWriting(path);
        writing = file.get() == INVALID_HANDLE_VALUE ? GetLastError() : 0;
        replacing = MoveFileW(path, (site.ServerFolder() / "moved.dll").c_str()) ? 0 : GetLastError();
        return LoadLibraryExDouble::Original(path, reserved, flags);
    });
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    EXPECT_EQ(writing, static_cast<DWORD>(ERROR_SHARING_VIOLATION));
    EXPECT_EQ(replacing, static_cast<DWORD>(ERROR_SHARING_VIOLATION));
}

TEST_F(LoadingVerifiedFile, AFileThatSomebodyMayStillWriteIsRefusedWithAMessageOfItsOwn)
{
    site.Install();
    const Handle writer = OpenForWriting(site.PluginFile());
    ASSERT_NE(writer.get(), INVALID_HANDLE_VALUE);
    EXPECT_THAT(FailedStart(), EndsWith("Client plugin module " + File() +
                                        " cannot be kept from changing while it is loaded. Error: " +
                                        SystemText(ERROR_SHARING_VIOLATION) + '\n'));
    EXPECT_FALSE(IsLoaded(site.PluginFile()));
}

TEST_F(LoadingVerifiedFile, AFileThatCannotBeHeldIsRefusedEvenWhereItsSignatureIsValid)
{
    site.Install();
    const CreateFileDouble refuse([&](LPCWSTR path, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security,
                                      DWORD disposition, DWORD flags, HANDLE model) {
        if (path == site.PluginFile().native())
        {
            SetLastError(ERROR_SHARING_VIOLATION);
            return INVALID_HANDLE_VALUE;
        }
        return CreateFileDouble::Original(path, access, sharing, security, disposition, flags, model);
    });
    const std::string output = FailedStart();
    EXPECT_EQ(output, "Client plugin module " + File() + " cannot be kept from changing while it is loaded. Error: " +
                          SystemText(ERROR_SHARING_VIOLATION) + '\n');
    EXPECT_FALSE(IsLoaded(site.PluginFile()));
}

TEST_F(LoadingVerifiedFile, ARefusedFileIsNeverPassedToTheLibraryLoader)
{
    site.Install("stranger");
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
    EXPECT_FALSE(IsLoaded(site.PluginFile()));
}

TEST_F(LoadingVerifiedFile, AFolderSwappedUnderTheHeldFileIsNoticed)
{
    site.Install();
    const std::filesystem::path aside = site.ServerFolder().parent_path() / "aside";
    bool mapped = false;
    const LoadLibraryExDouble swap([&](LPCWSTR path, HANDLE file, DWORD flags) {
        // The system keeps the file itself from being replaced, but not everywhere the folders above it.
        std::filesystem::rename(site.ServerFolder(), aside);
        std::filesystem::create_directory(site.ServerFolder());
        site.CopyPlugin("unsigned", site.PluginFile());
        const HMODULE module = LoadLibraryExDouble::Original(path, file, flags);
        mapped = module != nullptr;
        return module;
    });
    EXPECT_THAT(FailedStart(), HasSubstr(OtherFileMessage()));
    EXPECT_TRUE(mapped);
    EXPECT_FALSE(IsLoaded(site.PluginFile()));
}

TEST_F(LoadingVerifiedFile, AFileBehindALinkIsVerifiedAndLoadedByItsOwnPath)
{
    site.Install("unsigned"); // what the link leads to by the time of the next look
    const std::filesystem::path real = InstallElsewhere("good");
    const PluginControl plugin(real);
    const CreateFileDouble link(LeadingTo(site.PluginFile(), real));
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
    EXPECT_FALSE(IsLoaded(site.PluginFile()));
    EXPECT_THAT(plugin.Log(), Contains(LogLine{Info, "Binary file: is valid: " + File()}));
    EXPECT_THAT(plugin.Log(), Contains(LogLine{Info, "Successfully loaded client plugin module " + File()}));
}

TEST_F(LoadingVerifiedFile, ALinkThatLeadsToAnAcceptedFileDuringTheVerificationAloneIsOfNoUse)
{
    site.Install("good");
    const std::filesystem::path evil = InstallElsewhere("unsigned");
    const CreateFileDouble before(LeadingTo(site.PluginFile(), evil));
    int loads = 0;
    const auto after = [&](LPCWSTR path) {
        ++loads;
        return path == site.PluginFile().native() ? evil.c_str() : path;
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
    site.Install("good");
    const CreateFileDouble link(LeadingTo(site.PluginFile(), InstallElsewhere("good", "Real")));
    EXPECT_EQ(FailedStart(),
              "Failed to load client plugin module " + File() + ". Error: " + SystemText(ERROR_BAD_PATHNAME) + '\n');
}

TEST_F(LoadingVerifiedFile, AFileWhoseOwnPathIsUnknownIsRefusedEvenWhereItsSignatureIsValid)
{
    site.Install();
    const FinalPathDouble unknown([](HANDLE, LPWSTR, DWORD, DWORD) {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return DWORD{0};
    });
    EXPECT_EQ(FailedStart(), "Client plugin module " + File() +
                                 " cannot be kept from changing while it is loaded. Error: " +
                                 SystemText(ERROR_PATH_NOT_FOUND) + '\n');
    EXPECT_FALSE(IsLoaded(site.PluginFile()));
}

TEST_F(LoadingVerifiedFile, AModuleFromAnotherFileIsNotKept)
{
    site.Install();
    const std::filesystem::path other = site.MakeFolder("other") / "PellwickClient.dll";
    site.CopyPlugin("good", other);
    const LoadLibraryDouble redirect([&](LPCWSTR) { return LoadLibraryDouble::Original(other.c_str()); });
    EXPECT_THAT(FailedStart(), HasSubstr(OtherFileMessage()));
    EXPECT_FALSE(IsLoaded(other));
}

} // namespace OrlindexTest
