// Relative module paths, and paths for which the loader would load another file than the verified one.

#include "LoadingSupport.h"
#include "support/PlatformImports.h"

namespace OrlindexTest {

using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::SizeIs;

class LoadingPath : public Loading
{
protected:
    /// Installs everything except the module at `modulePath`.
    void Configure(const std::string& modulePath) const
    {
        installation.InstallWithoutPlugin();
        installation.WriteCompatibilityFile({CompatibilityEntry{modulePath}});
    }

    /// Expects a start-up with this path to verify and load `file` by its full path, and to log the path as configured.
    void ExpectLoadedByFullPath(const std::string& modulePath, const std::string& shown,
                                const std::filesystem::path& file)
    {
        Configure(modulePath);
        const PluginControl plugin(file);
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
        EXPECT_THAT(paths, AllOf(SizeIs(4), Each(file.native())));
        EXPECT_THAT(plugin.Log(), AllOf(Contains(LogLine{Info, "Binary file: is valid: " + shown}),
                                        Contains(LogLine{Info, "Dynamically loading client plugin module " + shown}),
                                        Contains(LogLine{Info, "Successfully loaded client plugin module " + shown})));
    }

    /// Expects a start-up with this path to fail at the load, before the library loader is called.
    void ExpectRefused(const std::string& modulePath) const
    {
        Configure(modulePath);
        EXPECT_EQ(FailedStart(), LoadFailure(modulePath, ERROR_BAD_PATHNAME));
        EXPECT_EQ(GetModuleHandleW(L"plugin.dll"), nullptr);
        EXPECT_EQ(GetModuleHandleW(L"plugin"), nullptr);
    }
};

TEST_F(LoadingPath, ABareNameInTheCurrentDirectoryIsVerifiedAndLoadedByItsFullPath)
{
    const std::filesystem::path folder = installation.MakeFolder("current");
    installation.CopyPlugin("good", folder / "Relative.dll");
    installation.CopyPlugin("unsigned",
                            installation.HostFolder() / "Relative.dll"); // Where the loader would search first.
    ASSERT_TRUE(SetCurrentDirectoryW(folder.c_str()));
    ExpectLoadedByFullPath("Relative.dll", "Relative.dll", folder / "Relative.dll");
}

TEST_F(LoadingPath, APathRelativeToTheCurrentDirectoryIsVerifiedAndLoadedByItsFullPath)
{
    const std::filesystem::path folder = installation.MakeFolder("current");
    std::filesystem::create_directory(folder / "sub");
    installation.CopyPlugin("good", folder / "sub" / "Relative.dll");
    ASSERT_TRUE(SetCurrentDirectoryW(folder.c_str()));
    ExpectLoadedByFullPath("sub/Relative.dll", "sub\\Relative.dll", folder / "sub" / "Relative.dll");
}

TEST_F(LoadingPath, ARelativePathToAFileWhoseSignatureIsNotAcceptedIsNotLoaded)
{
    installation.CopyPlugin("unsigned", "Relative.dll");
    Configure("Relative.dll");
    EXPECT_EQ(FailedStart(), "Binary file: signature is invalid: Relative.dll\n");
    EXPECT_EQ(GetModuleHandleW(L"Relative.dll"), nullptr);
}

TEST_F(LoadingPath, AFileNameThatTheLoaderWouldExtendFailsAtTheLoad)
{
    const std::filesystem::path folder = installation.MakeFolder("modules");
    installation.CopyPlugin("good", folder / "plugin");         // would be verified
    installation.CopyPlugin("unsigned", folder / "plugin.dll"); // would be loaded
    ExpectRefused(Utf8(folder / "plugin"));
}

TEST_F(LoadingPath, AnEndThatTheSystemStripsFailsAtTheLoad)
{
    const std::filesystem::path folder = installation.MakeFolder("modules");
    installation.CopyPlugin("good", folder / "plugin.dll");
    ExpectRefused(Utf8(folder / "plugin.dll") + '.');
}

} // namespace OrlindexTest
