// Between verification and loading: what is loaded is the file that was verified, and nothing else.

#include "LoadingSupport.h"
#include "SystemText.h"
#include "support/Handle.h"

namespace OrlindexTest {

using testing::EndsWith;
using testing::HasSubstr;

namespace {

struct LoadLibraryExImport
{
    static constexpr char Name[] = "LoadLibraryExW";
    using Type = decltype(LoadLibraryExW);
};

struct CreateFileImport
{
    static constexpr char Name[] = "CreateFileW";
    using Type = decltype(CreateFileW);
};

using CreateFileDouble = ImportDouble<CreateFileImport>;
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
