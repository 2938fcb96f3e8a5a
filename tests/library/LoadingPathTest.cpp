// Module paths that are relative, and those that the loader would take for another file than the one that is verified.

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
    /// Installs everything but the module, which `modulePath` names.
    void Configure(const std::string& modulePath) const
    {
        site.InstallWithoutPlugin();
        site.WriteCompatibilityFile({CompatibilityEntry{modulePath}});
    }

    /// Expects a start with this path to verify and load `file` by its full path, and to name the path as configured.
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

    /// Expects a start with this path to fail at the load, before a module is passed to the library loader.
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
    const std::filesystem::path folder = site.MakeFolder("current");
    site.CopyPlugin("good", folder / "Relative.dll");
    site.CopyPlugin("unsigned", site.HostFolder() / "Relative.dll"); // Where the loader would search first.
    ASSERT_TRUE(SetCurrentDirectoryW(folder.c_str()));
    ExpectLoadedByFullPath("Relative.dll", "Relative.dll", folder / "Relative.dll");
}

TEST_F(LoadingPath, APathRelativeToTheCurrentDirectoryIsVerifiedAndLoadedByItsFullPath)
{
    const std::filesystem::path folder = site.MakeFolder("current");
    std::filesystem::create_directory(folder / "sub");
    site.CopyPlugin("good", folder / "sub" / "Relative.dll");
    ASSERT_TRUE(SetCurrentDirectoryW(folder.c_str()));
    ExpectLoadedByFullPath("sub/Relative.dll", "sub\\Relative.dll", folder / "sub" / "Relative.dll");
}

TEST_F(LoadingPath, ARelativePathToAFileWhoseSignatureIsNotAcceptedIsNotLoaded)
{
    site.CopyPlugin("unsigned", "Relative.dll");
    Configure("Relative.dll");
    EXPECT_EQ(FailedStart(), "Binary file: signature is invalid: Relative.dll\n");
    EXPECT_EQ(GetModuleHandleW(L"Relative.dll"), nullptr);
}

TEST_F(LoadingPath, AFileNameThatTheLoaderWouldExtendFailsAtTheLoad)
{
    const std::filesystem::path folder = site.MakeFolder("modules");
    site.CopyPlugin("good", folder / "plugin");         // would be verified
    site.CopyPlugin("unsigned", folder / "plugin.dll"); // would be loaded
    ExpectRefused(Utf8(folder / "plugin"));
}

TEST_F(LoadingPath, AnEndThatTheSystemStripsFailsAtTheLoad)
{
    const std::filesystem::path folder = site.MakeFolder("modules");
    site.CopyPlugin("good", folder / "plugin.dll");
    ExpectRefused(Utf8(folder / "plugin.dll") + '.');
}

} // namespace OrlindexTest
