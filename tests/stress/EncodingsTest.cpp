// Names in every script along the whole chain, and paths about as long as the platform takes them.

#include <windows.h>

#include "Child.h"
#include "Effort.h"
#include "StartTest.h"
#include "orlindex/talix.h"

namespace OrlindexTest {

namespace fs = std::filesystem;

namespace {

/// One element of a path each. Written in code points: sources are plain ASCII.
const std::wstring Names[] = {
    L"\u00DCml\u00E4ut \u00E9\u00E8",                    // Latin with marks
    L"\u041F\u0430\u043F\u043A\u0430",                   // Cyrillic
    L"\u03A6\u03AC\u03BA\u03B5\u03BB\u03BF\u03C2",       // Greek
    L"\u6587\u4EF6\u5939 \u30D5\u30A9\u30EB\u30C0",      // Chinese, Japanese
    L"\uD3F4\uB354",                                     // Korean
    L"\u05EA\u05D9\u05E7\u05D9\u05D9\u05D4",             // Hebrew, from right to left
    L"\u0645\u062C\u0644\u062F",                         // Arabic
    L"\u0E42\u0E1F\u0E25\u0E40\u0E14\u0E2D\u0E23\u0E4C", // Thai
    L"\U0001F600 \U0001F468\u200D\U0001F469",            // beyond the basic plane, with a joiner
    L"e\u0301 a\u0308",                                  // marks that combine
    L"a b  c",
    L"100% %done",
    L"semi'colon, [brackets] {braces} $&+=@!",
};

/// Paths of any length, past the limit that plain ones have.
std::wstring Long(const fs::path& path)
{
    return L"\\\\?\\" + path.native();
}

/// A folder below `parent` whose module file has a path of this many characters.
fs::path FolderForLength(fs::path parent, std::size_t length, std::size_t fileName)
{
    while (parent.native().size() + 1 + fileName < length)
    {
        std::size_t missing = length - parent.native().size() - 2 - fileName; // Without both separators.
        if (missing > 200)
            missing = 150;
        parent /= std::wstring(missing, L'd');
        if (!CreateDirectoryW(Long(parent).c_str(), nullptr) && GetLastError() != ERROR_ALREADY_EXISTS)
            throw std::runtime_error("cannot make " + Utf8(parent));
        if (missing == length - parent.native().size() - 1 - fileName)
            break;
    }
    return parent;
}

} // namespace

class Encodings : public StartTest
{
protected:
    /// Host, server application and module each in a folder of this name.
    StartFigures StartAmong(const std::wstring& name)
    {
        const fs::path host = site.MakeFolder(name);
        const fs::path server = site.MakeFolder(fs::path(name) / (L"server " + name));
        const fs::path module = server / name / L"PellwickClient.dll";
        fs::create_directories(module.parent_path());
        for (const fs::path& file : {OwnExecutable(), OwnExecutable().parent_path() / "Orlindex.dll"})
            fs::copy_file(file, host / file.filename(), fs::copy_options::overwrite_existing);
        WriteFile(host / "Orlindex.config",
                  R"({"ssoServer": {"searchPaths": "%ExePath%\\)" + JsonPath(server.filename()) + R"("}})");
        site.InstallServerApplication(server);
        site.WriteCompatibilityFile(
            {CompatibilityEntry{"%SSOServerAppPath%\\" + ToUtf8(name) + "\\PellwickClient.dll"}});
        fs::copy_file(site.CompatibilityFile(), server / site.CompatibilityFile().filename());
        site.CopyPlugin("good", module);
        return StartInChild(ToUtf8(name), host / OwnExecutable().filename());
    }
};

TEST_F(Encodings, NamesInEveryScriptServeAlongTheWholeChain)
{
    if (ChildInput())
        return StartAndAnswer();
    int names = 0;
    for (const std::wstring& name : Names)
    {
        const StartFigures figures = StartAmong(name);
        EXPECT_EQ(figures.result, IdSuccess) << ToUtf8(name) << '\n' << figures.output;
        ++names;
    }
    PrintCount("names along the whole chain", names);
}

TEST_F(Encodings, PathsAboutTheLimitOfThePlatformServeOrAreRefused)
{
    if (ChildInput())
        return StartAndAnswer();
    constexpr char file[] = "PellwickClient.dll";
    const fs::path source = site.MakeFolder("source") / file;
    site.CopyPlugin("good", source);
    site.InstallWithoutPlugin();
    int lengths = 0;
    for (const std::size_t length : {200, 255, 256, 257, 258, 259, 260, 261, 262, 263, 300, 1000, 4000})
    {
        const fs::path module = FolderForLength(site.ServerFolder(), length, sizeof file - 1) / file;
        ASSERT_EQ(module.native().size(), length);
        ASSERT_TRUE(CopyFileW(source.c_str(), Long(module).c_str(), FALSE)) << GetLastError();
        site.WriteCompatibilityFile({CompatibilityEntry{Utf8(module)}});
        const StartFigures figures = StartInChild("a path of " + std::to_string(length));
        if (length < MAX_PATH)
        {
            EXPECT_EQ(figures.result, IdSuccess) << length << '\n' << figures.output;
        }
        ++lengths;
    }
    PrintCount("lengths of a module's path", lengths);
}

} // namespace OrlindexTest
