// The version compatibility file: where it is found.

#include "VersionCompatibilityFileTest.h"

namespace OrlindexTest {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(VersionCompatibilityFile, IsFoundBesideTheServerApplication)
{
    FindServerApplication();
    installation.WriteCompatibilityFile({Entry("%SSOServerAppPath%\\Client.dll")});
    EXPECT_TRUE(manager.FindCompatibleClientPlugin());
    const fs::path file = installation.CompatibilityFile();
    const fs::path module = installation.ServerFolder() / "Client.dll";
    EXPECT_EQ(File(), Utf8(file));
    EXPECT_EQ(Module(), Utf8(module));
    EXPECT_THAT(log.Take(), ElementsAre(Searching(Lines({installation.ServerFolder()})), Located(file),
                                        SearchingPlugin(file), FoundPlugin(module)));
}

TEST_F(VersionCompatibilityFile, APathThatIsKnownEndsTheMatter)
{
    EXPECT_NE(Chosen({Entry("C:\\first.dll")}), "");
    log.Take();
    installation.WriteCompatibilityFile({Entry("C:\\second.dll")});
    EXPECT_TRUE(manager.FindCompatibleClientPlugin());
    EXPECT_EQ(Module(), "C:\\first.dll");
    EXPECT_THAT(log.Take(), IsEmpty());
}

TEST_F(VersionCompatibilityFile, IsLocatedOnceAndReadAfreshEachTime)
{
    FindServerApplication();
    installation.WriteCompatibilityFile("{}");
    EXPECT_FALSE(manager.FindCompatibleClientPlugin());
    log.Take();
    installation.WriteCompatibilityFile({Entry("C:\\second.dll")});
    EXPECT_TRUE(manager.FindCompatibleClientPlugin());
    EXPECT_THAT(log.Take(),
                ElementsAre(SearchingPlugin(installation.CompatibilityFile()), FoundPlugin("C:\\second.dll")));
}

TEST_F(VersionCompatibilityFile, IsSearchedInTheConfiguredDirectoryNext)
{
    const fs::path folder = installation.MakeFolder(fs::path("host") / "compatibility");
    WriteFile(folder / FileName, R"({"ssoClientPlugin": []})");
    installation.InstallServerApplication(installation.HostFolder());
    installation.WriteClientConfig(ServerMember("VersionCompatibilityConfigfilePath", R"("%ExePath%\\compatibility")"));
    ASSERT_TRUE(manager.FindSSOServerApp());
    log.Take();
    EXPECT_FALSE(manager.FindCompatibleClientPlugin());
    EXPECT_EQ(File(), Utf8(folder / FileName));
    const auto lines = log.Take();
    EXPECT_THAT(std::vector<LogLine>(lines.begin(), lines.begin() + 4),
                ElementsAre(Searching(Lines({installation.HostFolder()})), Searching(Lines({folder})),
                            Located(folder / FileName), SearchingPlugin(folder / FileName)));
}

TEST_F(VersionCompatibilityFile, TheServerApplicationsDirectoryWinsOverTheConfigured)
{
    const fs::path folder = installation.MakeFolder(fs::path("host") / "compatibility");
    WriteFile(folder / FileName, "{}");
    WriteFile(installation.HostFolder() / FileName, "{}");
    installation.InstallServerApplication(installation.HostFolder());
    installation.WriteClientConfig(ServerMember("VersionCompatibilityConfigfilePath", '"' + JsonPath(folder) + '"'));
    manager.FindCompatibleClientPlugin();
    EXPECT_EQ(File(), Utf8(installation.HostFolder() / FileName));
}

TEST_F(VersionCompatibilityFile, NotFoundInEitherDirectory)
{
    const fs::path folder = installation.MakeFolder("compatibility");
    installation.InstallServerApplication(installation.HostFolder());
    installation.WriteClientConfig(ServerMember("VersionCompatibilityConfigfilePath", '"' + JsonPath(folder) + '"'));
    ASSERT_TRUE(manager.FindSSOServerApp());
    log.Take();
    EXPECT_FALSE(manager.FindCompatibleClientPlugin());
    EXPECT_EQ(File(), FileName);
    EXPECT_THAT(log.Take(), ElementsAre(Searching(Lines({installation.HostFolder()})), Searching(Lines({folder})),
                                        NotLocated(Lines({folder})), SearchingPlugin(FileName), FileMissing(FileName),
                                        NoPluginWithoutFile(FileName)));
}

TEST_F(VersionCompatibilityFile, WithoutConfiguredDirectoryTheSecondSearchHasNone)
{
    FindServerApplication();
    WriteFile(FileName, "planted"); // The current directory is not searched.
    EXPECT_FALSE(manager.FindCompatibleClientPlugin());
    const auto lines = log.Take();
    EXPECT_THAT(std::vector<LogLine>(lines.begin(), lines.begin() + 3),
                ElementsAre(Searching(Lines({installation.ServerFolder()})), Searching(""), NotLocated("")));
}

TEST_F(VersionCompatibilityFile, AFileInTheCurrentDirectoryIsNeverRead)
{
    FindServerApplication();
    WriteFile(FileName, R"({"ssoClientPlugin": [{"module": "planted", "modulePath": "C:\\planted.dll",
        "version": "9", "compatibleSsoServicesVersion": {"minVersion": "1"}}]})");
    EXPECT_FALSE(manager.FindCompatibleClientPlugin());
    const auto lines = log.Take();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_THAT(std::vector<LogLine>(lines.end() - 2, lines.end()),
                ElementsAre(FileMissing(FileName), NoPluginWithoutFile(FileName)));
}

TEST_F(VersionCompatibilityFile, WithoutServerApplicationTheReferenceStaysInTheMessage)
{
    ASSERT_FALSE(manager.FindSSOServerApp());
    EXPECT_FALSE(manager.FindCompatibleClientPlugin());
    EXPECT_THAT(log.Take(), testing::Contains(Searching("%SSOServerAppPath%")));
    EXPECT_EQ(File(), FileName);
}

TEST_F(VersionCompatibilityFile, AFolderNamedLikeAReferenceWithoutValueIsNeverSearched)
{
    ASSERT_FALSE(manager.FindSSOServerApp());
    fs::create_directory("%SSOServerAppPath%");
    WriteFile(fs::path("%SSOServerAppPath%") / FileName, "planted");
    EXPECT_FALSE(manager.FindCompatibleClientPlugin());
    EXPECT_EQ(File(), FileName);
}

TEST_F(VersionCompatibilityFile, AnOverrideMayBeABareName)
{
    FindServerApplication();
    installation.WriteCompatibilityFile({Entry("C:\\default.dll")});
    fs::copy_file(installation.CompatibilityFile(), "other.json");
    manager.SetVersionCompatibilityFileOverride(L"other.json");
    EXPECT_TRUE(manager.FindCompatibleClientPlugin());
}

TEST_F(VersionCompatibilityFile, AnOverrideThatEqualsTheBareDefaultNameIsAFileLikeAnyOther)
{
    FindServerApplication();
    installation.WriteCompatibilityFile({Entry("C:\\default.dll")});
    fs::rename(installation.CompatibilityFile(), FileName);
    manager.SetVersionCompatibilityFileOverride(ToWide(FileName));
    EXPECT_TRUE(manager.FindCompatibleClientPlugin());
    EXPECT_EQ(File(), FileName);
    EXPECT_THAT(log.Take(),
                ElementsAre(InfoLine(std::string("Found version compatibility file override at ") + FileName),
                            SearchingPlugin(FileName), FoundPlugin("C:\\default.dll")));
}

TEST_F(VersionCompatibilityFile, AMissingFileIsNamedOnceAndThenByTheCaller)
{
    FindServerApplication();
    installation.WriteCompatibilityFile("{}");
    EXPECT_FALSE(manager.FindCompatibleClientPlugin());
    log.Take();
    const fs::path file = installation.CompatibilityFile();
    fs::remove(file);
    EXPECT_FALSE(manager.FindCompatibleClientPlugin());
    EXPECT_THAT(log.Take(), ElementsAre(SearchingPlugin(file), FileMissing(file), NoPluginWithoutFile(file)));
}

TEST_F(VersionCompatibilityFile, AnOverrideIsUsedWithoutSearch)
{
    FindServerApplication();
    installation.WriteCompatibilityFile({Entry("C:\\default.dll")});
    const fs::path file = installation.MakeFolder("elsewhere") / "other.json";
    fs::copy_file(installation.CompatibilityFile(), file);
    manager.SetVersionCompatibilityFileOverride(file.native());
    EXPECT_TRUE(manager.FindCompatibleClientPlugin());
    EXPECT_EQ(File(), Utf8(file));
    EXPECT_THAT(log.Take(), ElementsAre(InfoLine("Found version compatibility file override at " + Utf8(file)),
                                        SearchingPlugin(file), FoundPlugin("C:\\default.dll")));
}

TEST_F(VersionCompatibilityFile, AnOverrideThatDoesNotExistEndsTheSearch)
{
    FindServerApplication();
    installation.WriteCompatibilityFile({Entry("C:\\default.dll")});
    const fs::path file = installation.HostFolder() / "missing.json";
    manager.SetVersionCompatibilityFileOverride(file.native());
    EXPECT_FALSE(manager.FindCompatibleClientPlugin());
    EXPECT_EQ(Module(), "");
    EXPECT_EQ(File(), "");
    EXPECT_THAT(log.Take(), ElementsAre(ErrorLine("Failed to find version compatibility file override " + Utf8(file)),
                                        SearchingPlugin(""), FileMissing(""), NoPluginWithoutFile("")));
}

} // namespace OrlindexTest
