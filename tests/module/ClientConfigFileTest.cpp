// The client config file: where it is found.

#include "ClientConfigFileTest.h"

namespace OrlindexTest {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

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

} // namespace OrlindexTest
