// Names in many scripts for host, server application and module, and paths around the platform's limit of length.

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>
#include <windows.h>

#include "StartTest.h"
#include "TestScale.h"
#include "orlindex/talix.h"
#include "support/Child.h"

namespace OrlindexTest {

namespace fs = std::filesystem;

namespace {

/// One element of a path each, as code points: the sources are plain ASCII.
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

/// The form of a path that has no limit of length.
std::wstring Long(const fs::path& path)
{
    return L"\\\\?\\" + path.native();
}

/// Copies of a file with paths of any length. The destructor removes them, as the clean-up of the test's folder only
/// handles short paths.
class LongCopies
{
public:
    explicit LongCopies(fs::path source) : source_(std::move(source)) {}

    ~LongCopies()
    {
        for (const fs::path& copy : copies_)
            DeleteFileW(Long(copy).c_str());
        for (auto folder = folders_.rbegin(); folder != folders_.rend(); ++folder)
            RemoveDirectoryW(Long(*folder).c_str());
    }

    LongCopies(const LongCopies&) = delete;
    LongCopies& operator=(const LongCopies&) = delete;

    /// A copy below `folder` with a path of this length.
    fs::path Make(fs::path folder, std::size_t length)
    {
        constexpr std::size_t longestName = 200;
        constexpr std::size_t shortened = 150; // Leaves enough characters for another name.
        const std::size_t file = source_.filename().native().size();
        while (folder.native().size() + 1 + file < length)
        {
            const std::size_t missing = length - folder.native().size() - 2 - file; // Without both separators.
            folder /= std::wstring(missing > longestName ? shortened : missing, L'd');
            MakeFolder(folder);
        }
        copies_.push_back(folder / source_.filename());
        if (!CopyFileW(source_.c_str(), Long(copies_.back()).c_str(), FALSE))
            throw std::runtime_error("cannot make " + Utf8(copies_.back()));
        return copies_.back();
    }

private:
    void MakeFolder(const fs::path& folder)
    {
        if (CreateDirectoryW(Long(folder).c_str(), nullptr))
            folders_.push_back(folder);
        else if (GetLastError() != ERROR_ALREADY_EXISTS)
            throw std::runtime_error("cannot make " + Utf8(folder));
    }

    fs::path source_;
    std::vector<fs::path> folders_;
    std::vector<fs::path> copies_;
};

} // namespace

class Encodings : public StartTest
{
protected:
    /// Starts the library with host, server application and module each in a folder of this name.
    StartFigures StartAmong(const std::wstring& name)
    {
        const fs::path host = installation.MakeFolder(name);
        const fs::path server = installation.MakeFolder(fs::path(name) / (L"server " + name));
        const fs::path module = server / name / L"PellwickClient.dll";
        fs::create_directories(module.parent_path());
        for (const fs::path& file : {OwnExecutable(), OwnExecutable().parent_path() / "Orlindex.dll"})
            fs::copy_file(file, host / file.filename(), fs::copy_options::overwrite_existing);
        WriteFile(host / "Orlindex.config",
                  R"({"ssoServer": {"searchPaths": "%ExePath%\\)" + JsonPath(server.filename()) + R"("}})");
        installation.InstallServerApplication(server);
        installation.WriteCompatibilityFile(
            {CompatibilityEntry{"%SSOServerAppPath%\\" + ToUtf8(name) + "\\PellwickClient.dll"}});
        fs::copy_file(installation.CompatibilityFile(), server / installation.CompatibilityFile().filename());
        installation.CopyPlugin("good", module);
        return StartInChild(ToUtf8(name), host / OwnExecutable().filename());
    }
};

TEST_F(Encodings, NamesInEveryScriptServeAlongTheWholeChain)
{
    if (ChildInput())
        return StartAndReport();
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
        return StartAndReport();
    const fs::path source = installation.MakeFolder("source") / "PellwickClient.dll";
    installation.CopyPlugin("good", source);
    installation.InstallWithoutPlugin();
    LongCopies copies(source);
    int lengths = 0;
    for (const std::size_t length : {200, 255, 256, 257, 258, 259, 260, 261, 262, 263, 300, 1000, 4000})
    {
        const fs::path module = copies.Make(installation.ServerFolder(), length);
        ASSERT_EQ(module.native().size(), length);
        installation.WriteCompatibilityFile({CompatibilityEntry{Utf8(module)}});
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
