// Module paths that the loader would take for another file than the one that is verified.

#include <windows.h>

#include "SystemText.h"
#include "support/HostTest.h"

namespace OrlindexTest {

using testing::HasSubstr;

class LoadingPath : public HostTest
{
protected:
    /// Expects a start with this module path to fail before anything is verified or loaded.
    void ExpectRefused(const std::string& modulePath, const std::string& shown) const
    {
        site.InstallWithoutPlugin();
        site.WriteCompatibilityFile({CompatibilityEntry{modulePath}});
        CapturedOutput output;
        EXPECT_EQ(IdServicesMgr::Initialize(), 3005);
        const std::string text = output.Take();
        EXPECT_THAT(text, HasSubstr("Failed to load client plugin module " + shown +
                                    ". Error: " + SystemText(ERROR_BAD_PATHNAME)));
        EXPECT_EQ(GetModuleHandleW(L"plugin.dll"), nullptr);
        EXPECT_EQ(GetModuleHandleW(L"PellwickClient.dll"), nullptr);
    }
};

TEST_F(LoadingPath, AFileNameThatTheLoaderWouldExtendIsRefused)
{
    const std::filesystem::path folder = site.MakeFolder("modules");
    site.CopyPlugin("good", folder / "plugin");         // would be verified
    site.CopyPlugin("unsigned", folder / "plugin.dll"); // would be loaded
    ExpectRefused(Utf8(folder / "plugin"), Utf8(folder / "plugin"));
}

TEST_F(LoadingPath, AnEndThatTheSystemStripsIsRefused)
{
    const std::filesystem::path folder = site.MakeFolder("modules");
    site.CopyPlugin("good", folder / "plugin.dll");
    ExpectRefused(Utf8(folder / "plugin.dll") + '.', Utf8(folder / "plugin.dll") + '.');
}

TEST_F(LoadingPath, ABareNameInTheCurrentDirectoryIsRefused)
{
    site.CopyPlugin("good", "PellwickClient.dll");
    site.CopyPlugin("unsigned", site.HostFolder() / "PellwickClient.dll"); // where the loader searches first
    ExpectRefused("PellwickClient.dll", "PellwickClient.dll");
}

TEST_F(LoadingPath, APathRelativeToTheCurrentDirectoryIsRefused)
{
    std::filesystem::create_directory("sub");
    site.CopyPlugin("good", std::filesystem::path("sub") / "plugin.dll");
    ExpectRefused("sub/plugin.dll", "sub\\plugin.dll");
}

} // namespace OrlindexTest
