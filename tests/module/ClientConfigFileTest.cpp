// The client config file: where it is found, how it is read, how a caller names it.

#include <windows.h>

#include "LocateTest.h"
#include "base/FileContents.h"
#include "support/Handle.h"

namespace OrlindexTest {

namespace fs = std::filesystem;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class ClientConfigFile : public LocateTest
{
protected:
    static LogLine Searching(const std::vector<fs::path>& directories)
    {
        return InfoLine("Searching for client config file Orlindex.config in the following paths:\n" +
                        Lines(directories));
    }

    static LogLine NotFound(const std::vector<fs::path>& directories)
    {
        return WarningLine("Failed to find client config file Orlindex.config in the following paths:\n" +
                           Lines(directories));
    }

    static LogLine Found(const fs::path& file) { return InfoLine("Found client config file at " + Utf8(file)); }
    static LogLine Loading(const fs::path& file) { return InfoLine("Loading client config file " + Utf8(file)); }

    static LogLine OverrideSet(const fs::path& file)
    {
        return InfoLine("Client config file override set to " + Utf8(file));
    }

    static LogLine Invalid(const fs::path& file)
    {
        return ErrorLine("Failed to load client config file " + Utf8(file) + ". Invalid file format.");
    }

    static LogLine Support(const std::string& answer)
    {
        return InfoLine("Configuration to support both local and admin: " + answer + '.');
    }

    std::vector<fs::path> DefaultPlaces() const { return {site.HostFolder(), library}; }
    std::string Path() const { return ToUtf8(manager.ClientConfigFilePath()); }

    void ExpectFixedSettings() const
    {
        EXPECT_EQ(manager.Settings().searchName, L"Pellwick.exe");
        EXPECT_EQ(manager.Settings().executableName, L"Pellwick.exe");
        EXPECT_EQ(manager.Settings().defaultProcessName, "Kestrany.TALIX.DefaultProcess-v2");
        EXPECT_EQ(manager.Settings().defaultServerName, "Kestrany.TALIX.DefaultServer-v2");
    }

    void ExpectNothingConfigured() const
    {
        ExpectFixedSettings();
        EXPECT_EQ(manager.Settings().bundleId, L"");
        EXPECT_EQ(manager.Settings().versionCompatibilityConfigFilePath, L"");
        EXPECT_THAT(manager.Settings().searchPaths, IsEmpty());
        EXPECT_FALSE(manager.Settings().supportBothLocalAndAdmin);
    }

    /// Loads a file of that content, which must be refused.
    void ExpectInvalid(const std::string& bytes)
    {
        site.WriteClientConfig(bytes);
        EXPECT_TRUE(manager.LoadClientConfig());
        EXPECT_THAT(log.Take(), ElementsAre(Searching(DefaultPlaces()), Found(site.ClientConfigFile()),
                                            Loading(site.ClientConfigFile()), Invalid(site.ClientConfigFile())));
        ExpectNothingConfigured();
    }

    /// Loads a file of that content, which says nothing but is sound.
    void ExpectNothingIn(const std::string& bytes)
    {
        site.WriteClientConfig(bytes);
        EXPECT_TRUE(manager.LoadClientConfig());
        EXPECT_EQ(log.Take().back(), Support("No"));
        ExpectNothingConfigured();
    }
};

// Finding

TEST_F(ClientConfigFile, IsFoundBesideTheHost)
{
    site.WriteClientConfig("{}");
    EXPECT_TRUE(manager.FindClientConfigFile());
    EXPECT_EQ(Path(), Utf8(site.ClientConfigFile()));
    EXPECT_THAT(log.Take(), ElementsAre(Searching(DefaultPlaces()), Found(site.ClientConfigFile())));
}

TEST_F(ClientConfigFile, IsFoundBesideTheLibrary)
{
    WriteFile(library / "Orlindex.config", "{}");
    EXPECT_TRUE(manager.FindClientConfigFile());
    EXPECT_EQ(Path(), Utf8(library / "Orlindex.config"));
}

TEST_F(ClientConfigFile, TheHostsWinsOverTheLibrarysAndThatOverAnExtraOne)
{
    const fs::path extra = site.MakeFolder("extra");
    manager.AddClientConfigSearchPath(extra.native());
    WriteFile(extra / "Orlindex.config", "{}");
    WriteFile(library / "Orlindex.config", "{}");
    EXPECT_TRUE(manager.FindClientConfigFile());
    EXPECT_EQ(Path(), Utf8(library / "Orlindex.config"));

    site.WriteClientConfig("{}");
    manager.SetClientConfigFileOverride(L""); // Discards what was found.
    EXPECT_TRUE(manager.FindClientConfigFile());
    EXPECT_EQ(Path(), Utf8(site.ClientConfigFile()));
}

TEST_F(ClientConfigFile, ExtraDirectoriesAreSearchedInTheirOrderAndExpanded)
{
    const fs::path first = site.MakeFolder(fs::path("host") / "first");
    const fs::path second = site.MakeFolder("second");
    manager.AddClientConfigSearchPath(L"%ExePath%\\first");
    manager.AddClientConfigSearchPath(second.native());
    WriteFile(second / "Orlindex.config", "{}");
    EXPECT_TRUE(manager.FindClientConfigFile());
    EXPECT_EQ(Path(), Utf8(second / "Orlindex.config"));
    EXPECT_EQ(log.Take().at(0), Searching({site.HostFolder(), library, first, second}));
}

TEST_F(ClientConfigFile, NotFoundLeavesTheBareNameAndAWarning)
{
    EXPECT_FALSE(manager.FindClientConfigFile());
    EXPECT_EQ(Path(), "Orlindex.config");
    EXPECT_THAT(log.Take(), ElementsAre(Searching(DefaultPlaces()), NotFound(DefaultPlaces())));
}

TEST_F(ClientConfigFile, IsSearchedOnce)
{
    EXPECT_FALSE(manager.FindClientConfigFile());
    log.Take();
    site.WriteClientConfig("{}");
    EXPECT_TRUE(manager.FindClientConfigFile()) << "the bare name is a result too";
    EXPECT_EQ(Path(), "Orlindex.config");
    EXPECT_THAT(log.Take(), IsEmpty());
}

TEST_F(ClientConfigFile, TheBareNameIsReadFromTheCurrentDirectory)
{
    WriteFile("Orlindex.config", ServerMember("bundleId", R"("current")"));
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_THAT(log.Take(), ElementsAre(Searching(DefaultPlaces()), NotFound(DefaultPlaces()),
                                        Loading("Orlindex.config"), Support("No")));
    EXPECT_EQ(manager.Settings().bundleId, L"current");
}

// Reading

TEST_F(ClientConfigFile, EveryKeyIsStored)
{
    site.WriteClientConfig(R"({"other": 1, "ssoServer": {"bundleId": "com.kestrany.)"
                           "\xE4\xB8\xAD"
                           R"(", "VersionCompatibilityConfigfilePath": "%ExePath%\\compatibility",
                              "searchPaths": "C:\\\u4e2d", "supportBothLocalAndAdmin": true}})");
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_EQ(manager.Settings().bundleId, L"com.kestrany.\u4E2D");
    EXPECT_EQ(manager.Settings().versionCompatibilityConfigFilePath, L"%ExePath%\\compatibility")
        << "expanded when it is searched";
    EXPECT_THAT(manager.Settings().searchPaths, ElementsAre(L"C:\\\u4E2D"));
    EXPECT_TRUE(manager.Settings().supportBothLocalAndAdmin);
    ExpectFixedSettings();
}

TEST_F(ClientConfigFile, SearchPathsAreSplitAndExpanded)
{
    site.WriteClientConfig(ServerMember("searchPaths", R"("%ExePath%;C:\\second")"));
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_THAT(manager.Settings().searchPaths, ElementsAre(site.HostFolder().native(), L"C:\\second"));
}

TEST_F(ClientConfigFile, EmptyEntriesOfSearchPathsAreKept)
{
    site.WriteClientConfig(ServerMember("searchPaths", R"(";C:\\one;;%Unknown%;")"));
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_THAT(manager.Settings().searchPaths, ElementsAre(L"", L"C:\\one", L"", L"%Unknown%", L""));
}

TEST_F(ClientConfigFile, SupportBothLocalAndAdminIsLoggedAsYes)
{
    site.WriteClientConfig(ServerMember("supportBothLocalAndAdmin", "true"));
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_THAT(log.Take(), ElementsAre(Searching(DefaultPlaces()), Found(site.ClientConfigFile()),
                                        Loading(site.ClientConfigFile()), Support("Yes")));
}

TEST_F(ClientConfigFile, WithoutSupportBothLocalAndAdminNoIsLogged)
{
    site.WriteClientConfig(ServerMember("supportBothLocalAndAdmin", "false"));
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_EQ(log.Take().back(), Support("No"));
}

TEST_F(ClientConfigFile, AMissingFileLeavesTheFixedSettingsAlone)
{
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_THAT(log.Take(), ElementsAre(Searching(DefaultPlaces()), NotFound(DefaultPlaces())));
    ExpectNothingConfigured();
}

TEST_F(ClientConfigFile, ASecondLoadReturnsFalseAndReadsNothing)
{
    site.WriteClientConfig(ServerMember("bundleId", R"("first")"));
    EXPECT_TRUE(manager.LoadClientConfig());
    log.Take();
    site.WriteClientConfig(ServerMember("bundleId", R"("second")"));
    EXPECT_FALSE(manager.LoadClientConfig());
    EXPECT_EQ(manager.Settings().bundleId, L"first");
    EXPECT_THAT(log.Take(), IsEmpty());
}

TEST_F(ClientConfigFile, AMissingFileIsNotLookedForAgain)
{
    EXPECT_TRUE(manager.LoadClientConfig());
    log.Take();
    site.WriteClientConfig(ServerMember("bundleId", R"("late")"));
    EXPECT_FALSE(manager.LoadClientConfig());
    EXPECT_EQ(manager.Settings().bundleId, L"");
    EXPECT_THAT(log.Take(), IsEmpty());
}

TEST_F(ClientConfigFile, AFileThatWasFoundBeforeIsReadWithoutAnotherSearch)
{
    site.WriteClientConfig("{}");
    manager.FindClientConfigFile();
    log.Take();
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_THAT(log.Take(), ElementsAre(Loading(site.ClientConfigFile()), Support("No")));
}

TEST_F(ClientConfigFile, MalformedIsRefused)
{
    ExpectInvalid(R"({"ssoServer": {"bundleId": "com.kestrany.test")");
}

TEST_F(ClientConfigFile, EmptyIsRefused)
{
    ExpectInvalid("");
}

TEST_F(ClientConfigFile, BinaryIsRefused)
{
    ExpectInvalid(std::string("MZ\x90\0\x03\0\0\0\x04\0\0\0\xFF\xFF\0\0", 16) + std::string(70000, '\0'));
}

TEST_F(ClientConfigFile, NestedTooDeepIsRefused)
{
    ExpectInvalid(std::string(100000, '[') + std::string(100000, ']'));
}

TEST_F(ClientConfigFile, TooLargeIsRefused)
{
    using Kestrany::IdentityServices::LargestFile;
    const std::string json = ServerMember("bundleId", R"("large")");
    ExpectInvalid(json + std::string(LargestFile + 1 - json.size(), ' '));
}

TEST_F(ClientConfigFile, OfTheLargestSizeIsRead)
{
    using Kestrany::IdentityServices::LargestFile;
    const std::string json = ServerMember("bundleId", R"("large")");
    site.WriteClientConfig(json + std::string(LargestFile - json.size(), ' '));
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_EQ(manager.Settings().bundleId, L"large");
}

TEST_F(ClientConfigFile, ADirectoryInItsPlaceIsFoundAndRefused)
{
    fs::create_directory(site.ClientConfigFile());
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_THAT(log.Take(), ElementsAre(Searching(DefaultPlaces()), Found(site.ClientConfigFile()),
                                        Loading(site.ClientConfigFile()), Invalid(site.ClientConfigFile())));
    ExpectNothingConfigured();
}

TEST_F(ClientConfigFile, AFileThatAnotherKeepsToItselfIsRefused)
{
    site.WriteClientConfig("{}");
    const Handle keeper(
        CreateFileW(site.ClientConfigFile().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_NE(keeper.get(), INVALID_HANDLE_VALUE);
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_EQ(log.Take().back(), Invalid(site.ClientConfigFile()));
    ExpectNothingConfigured();
}

TEST_F(ClientConfigFile, AFileThatAnotherStillWritesToIsRead)
{
    site.WriteClientConfig(ServerMember("bundleId", R"("shared")"));
    const Handle writer(CreateFileW(site.ClientConfigFile().c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, 0, nullptr));
    ASSERT_NE(writer.get(), INVALID_HANDLE_VALUE);
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_EQ(manager.Settings().bundleId, L"shared");
}

TEST_F(ClientConfigFile, WithoutServerObjectNothingIsConfigured)
{
    ExpectNothingIn(R"({"other": {"bundleId": "b"}})");
}

TEST_F(ClientConfigFile, AnArrayAtTheTopConfiguresNothing)
{
    ExpectNothingIn(R"([{"ssoServer": {"bundleId": "b"}}])");
}

TEST_F(ClientConfigFile, AServerThatIsNoObjectConfiguresNothing)
{
    ExpectNothingIn(R"({"ssoServer": ["bundleId"]})");
}

TEST_F(ClientConfigFile, KeysOfAWrongTypeConfigureNothing)
{
    ExpectNothingIn(R"({"ssoServer": {"bundleId": [], "VersionCompatibilityConfigfilePath": 1e300,
                        "searchPaths": {"a": 1}, "supportBothLocalAndAdmin": "true"}})");
}

TEST_F(ClientConfigFile, AByteOrderMarkAndCommentsAreAccepted)
{
    site.WriteClientConfig("\xEF\xBB\xBF// ours\r\n" + ServerMember("bundleId", R"("b")") + " // end");
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_EQ(manager.Settings().bundleId, L"b");
}

// Overriding

TEST_F(ClientConfigFile, AnOverrideIsFoundWithoutSearch)
{
    const fs::path file = site.MakeFolder("elsewhere") / L"\u4E2D.json";
    WriteFile(file, ServerMember("bundleId", R"("elsewhere")"));
    site.WriteClientConfig(ServerMember("bundleId", R"("host")"));
    manager.SetClientConfigFileOverride(file.native());
    EXPECT_EQ(Path(), "") << "it is looked at when it is asked for";
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_EQ(Path(), Utf8(file));
    EXPECT_EQ(manager.Settings().bundleId, L"elsewhere");
    EXPECT_THAT(log.Take(),
                ElementsAre(OverrideSet(file), InfoLine("Found client config file override at " + Utf8(file)),
                            Loading(file), Support("No")));
}

TEST_F(ClientConfigFile, AnOverrideThatDoesNotExistIsKeptAndItsLoadIsSkippedSilently)
{
    site.WriteClientConfig(ServerMember("bundleId", R"("host")"));
    const fs::path file = site.HostFolder() / "missing.json";
    manager.SetClientConfigFileOverride(file.native());
    EXPECT_TRUE(manager.FindClientConfigFile());
    EXPECT_EQ(Path(), Utf8(file));
    EXPECT_THAT(log.Take(),
                ElementsAre(OverrideSet(file), ErrorLine("Failed to find client config file override " + Utf8(file))));
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_THAT(log.Take(), IsEmpty());
    ExpectNothingConfigured();
}

TEST_F(ClientConfigFile, ADirectoryAsOverrideIsFoundAndRefused)
{
    const fs::path folder = site.MakeFolder("folder");
    manager.SetClientConfigFileOverride(folder.native());
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_THAT(log.Take(),
                ElementsAre(OverrideSet(folder), InfoLine("Found client config file override at " + Utf8(folder)),
                            Loading(folder), Invalid(folder)));
}

TEST_F(ClientConfigFile, AnOverrideDiscardsWhatWasFoundBefore)
{
    site.WriteClientConfig("{}");
    EXPECT_TRUE(manager.FindClientConfigFile());
    const fs::path file = site.HostFolder() / "other.json";
    WriteFile(file, "{}");
    manager.SetClientConfigFileOverride(file.native());
    EXPECT_TRUE(manager.FindClientConfigFile());
    EXPECT_EQ(Path(), Utf8(file));
}

TEST_F(ClientConfigFile, TheLastOverrideCounts)
{
    for (const char* name : {"first.json", "second.json"})
    {
        WriteFile(site.HostFolder() / name, "{}");
        manager.SetClientConfigFileOverride((site.HostFolder() / name).native());
        EXPECT_TRUE(manager.FindClientConfigFile());
    }
    EXPECT_EQ(Path(), Utf8(site.HostFolder() / "second.json"));
    EXPECT_EQ(ToUtf8(manager.ClientConfigFileOverride()), Path());
}

TEST_F(ClientConfigFile, AnEmptyOverrideMeansTheDefaultPlaces)
{
    manager.SetClientConfigFileOverride(L"C:\\missing.json");
    manager.SetClientConfigFileOverride(L"");
    log.Take();
    site.WriteClientConfig("{}");
    EXPECT_TRUE(manager.FindClientConfigFile());
    EXPECT_EQ(log.Take().at(0), Searching(DefaultPlaces()));
}

TEST_F(ClientConfigFile, AnOverrideAfterTheConfigWasAskedForIsRefusedAndChangesNothing)
{
    site.WriteClientConfig(ServerMember("bundleId", R"("host")"));
    manager.GetSSOServerAppPath(); // Any component's question loads the config.
    log.Take();
    const fs::path file = site.HostFolder() / "late.json";
    WriteFile(file, ServerMember("bundleId", R"("late")"));
    manager.SetClientConfigFileOverride(file.native());
    EXPECT_THAT(log.Take(), ElementsAre(ErrorLine("Failed to set client config file override " + Utf8(file) +
                                                  " since client config file " + Utf8(site.ClientConfigFile()) +
                                                  " is already loaded")));
    EXPECT_EQ(Path(), Utf8(site.ClientConfigFile()));
    EXPECT_EQ(manager.ClientConfigFileOverride(), L"");
    EXPECT_FALSE(manager.LoadClientConfig());
    EXPECT_EQ(manager.Settings().bundleId, L"host");
}

TEST_F(ClientConfigFile, AnOverrideAfterAFileWasFoundMissingIsRefusedToo)
{
    EXPECT_TRUE(manager.LoadClientConfig());
    log.Take();
    manager.SetClientConfigFileOverride(L"C:\\late.json");
    EXPECT_THAT(log.Take(),
                ElementsAre(ErrorLine("Failed to set client config file override C:\\late.json since client "
                                      "config file Orlindex.config is already loaded")));
}

} // namespace OrlindexTest
