// A module path for which the library loader would load another file passes every step up to the load, in their order,
// and fails there.

#include <algorithm>

#include "Imports.h"
#include "LocateTest.h"
#include "base/Platform.h"
#include "support/PlatformImports.h"

namespace OrlindexTest {

namespace fs = std::filesystem;
using Kestrany::IdentityServices::GetSystemErrorText;
using testing::ElementsAre;
using testing::SizeIs;

class ModulePath : public LocateTest
{
protected:
    /// Installs everything but the module. `modulePath` is JSON text.
    void Configure(const std::string& modulePath) const
    {
        installation.InstallWithoutPlugin();
        installation.WriteCompatibilityFile(R"({"ssoClientPlugin": [{"module": "m", "version": "2", "modulePath": ")" +
                                            modulePath +
                                            R"(", "compatibleSsoServicesVersion": {"minVersion": "1"}}]})");
    }

    /// Expects that the manager fails to load the plugin without a call of the library loader. Returns the log from the
    /// first line about the module on.
    std::vector<LogLine> FailingLoad()
    {
        int loads = 0;
        const LoadLibraryExDouble first(
            [&loads](LPCWSTR path, HANDLE reserved, DWORD flags) {
                ++loads;
                return LoadLibraryExDouble::Original(path, reserved, flags);
            },
            Executable());
        const LoadLibraryDouble second(
            [&loads](LPCWSTR path) {
                ++loads;
                return LoadLibraryDouble::Original(path);
            },
            Executable());
        const SetDllDirectoryDouble directory(
            [this](LPCWSTR path) {
                directories.emplace_back(path != nullptr ? path : L"null");
                return SetDllDirectoryDouble::Original(path);
            },
            Executable());
        EXPECT_FALSE(manager.EnsureClientLoaded());
        EXPECT_EQ(loads, 0);
        const std::vector<LogLine> lines = log.Take();
        const auto chosen = std::find_if(lines.begin(), lines.end(), [](const LogLine& line) {
            return line.text.rfind("Found compatible client plugin", 0) == 0;
        });
        EXPECT_NE(chosen, lines.end());
        return chosen == lines.end() ? lines : std::vector<LogLine>(chosen + 1, lines.end());
    }

    static LogLine Failed(const std::string& path, DWORD error)
    {
        return ErrorLine("Failed to load client plugin module " + path +
                         ". Error: " + ToUtf8(GetSystemErrorText(error)));
    }

    /// Expects that the path `shown`, whose file is valid, fails only at the load.
    void ExpectFailureAtTheLoad(const std::string& shown, DWORD error)
    {
        EXPECT_THAT(FailingLoad(),
                    ElementsAre(InfoLine("******* Binary file: checking: " + shown),
                                InfoLine("Binary file: is valid: " + shown),
                                InfoLine("Dynamically loading client plugin module " + shown), Failed(shown, error)));
        EXPECT_THAT(directories, ElementsAre(modules.native(), L"")) << "set and restored around the load";
    }

    const fs::path modules = installation.MakeFolder("modules");
    std::vector<std::wstring> directories; ///< The values that the library search directory is set to.
};

TEST_F(ModulePath, WithoutExtensionFailsAtTheLoad)
{
    installation.CopyPlugin("good", modules / "plugin");
    Configure(JsonPath(modules / "plugin"));
    ExpectFailureAtTheLoad(Utf8(modules / "plugin"), ERROR_BAD_PATHNAME);
}

TEST_F(ModulePath, WithAPointAtItsEndFailsAtTheLoad)
{
    installation.CopyPlugin("good", modules / "plugin.dll");
    Configure(JsonPath(modules / "plugin.dll") + '.');
    ExpectFailureAtTheLoad(Utf8(modules / "plugin.dll") + '.', ERROR_BAD_PATHNAME);
}

TEST_F(ModulePath, WithABlankAtItsEndFailsAtTheLoad)
{
    installation.CopyPlugin("good", modules / "plugin.dll");
    Configure(JsonPath(modules / "plugin.dll") + ' ');
    ExpectFailureAtTheLoad(Utf8(modules / "plugin.dll") + ' ', ERROR_BAD_PATHNAME);
}

/// The file functions use the text before the zero character, so that file is verified.
TEST_F(ModulePath, WithAZeroInsideFailsAtTheLoad)
{
    installation.CopyPlugin("good", modules / "plugin.dll");
    Configure(JsonPath(modules / "plugin.dll") + "\\u0000.dll");
    ExpectFailureAtTheLoad(Utf8(modules / "plugin.dll") + std::string("\0.dll", 5), ERROR_BAD_PATHNAME);
}

TEST_F(ModulePath, OfAFileThatIsNotTrustedIsRefusedForItsSignature)
{
    installation.CopyPlugin("unsigned", modules / "plugin.dll");
    Configure(JsonPath(modules / "plugin.dll") + "\\u0000.dll");
    const std::string shown = Utf8(modules / "plugin.dll") + std::string("\0.dll", 5);
    EXPECT_THAT(FailingLoad(), ElementsAre(InfoLine("******* Binary file: checking: " + shown),
                                           ErrorLine("Binary file: signature is invalid: " + shown),
                                           InfoLine("Not loaded client plugin module " + shown)));
    EXPECT_THAT(directories, SizeIs(0));
}

TEST_F(ModulePath, OfAFileThatIsMissingIsNotFound)
{
    Configure(JsonPath(modules / "plugin.dll") + "\\u0000.dll");
    EXPECT_THAT(FailingLoad(), ElementsAre(ErrorLine("Client plugin module not found: " + Utf8(modules / "plugin.dll") +
                                                     std::string("\0.dll", 5))));
}

TEST_F(ModulePath, OfAFileThatCannotBeLockedFailsAtTheLoadOnceItsSignatureIsValid)
{
    const fs::path file = modules / "plugin.dll";
    installation.CopyPlugin("good", file);
    Configure(JsonPath(file));
    const CreateFileDouble refuse(
        [&file](LPCWSTR path, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                DWORD flags, HANDLE model) {
            if (path != file.native())
                return CreateFileDouble::Original(path, access, sharing, security, disposition, flags, model);
            SetLastError(ERROR_SHARING_VIOLATION);
            return INVALID_HANDLE_VALUE;
        },
        Executable());
    ExpectFailureAtTheLoad(Utf8(file), ERROR_SHARING_VIOLATION);
}

} // namespace OrlindexTest
