// The client config file: where it is found.

#include "ClientConfigFileTest.h"

namespace OrlindexTest {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(ClientConfigFile, IsFoundBesideTheHost)
{
    installation.WriteClientConfig("{}");
    EXPECT_TRUE(manager.FindClientConfigFile());
    EXPECT_EQ(Path(), Utf8(installation.ClientConfigFile()));
    EXPECT_THAT(log.Take(), ElementsAre(Searching(DefaultPlaces()), Found(installation.ClientConfigFile())));
}

TEST_F(ClientConfigFile, IsFoundBesideTheLibrary)
{
    WriteFile(library / "Orlindex.config", "{}");
    EXPECT_TRUE(manager.FindClientConfigFile());
    EXPECT_EQ(Path(), Utf8(library / "Orlindex.config"));
}

TEST_F(ClientConfigFile, TheHostsWinsOverTheLibrarysAndThatOverAnExtraOne)
{
    const fs::path extra = installation.MakeFolder("extra");
    manager.AddClientConfigSearchPath(extra.native());
    WriteFile(extra / "Orlindex.config", "{}");
    WriteFile(library / "Orlindex.config", "{}");
    EXPECT_TRUE(manager.FindClientConfigFile());
    EXPECT_EQ(Path(), Utf8(library / "Orlindex.config"));

    installation.WriteClientConfig("{}");
    manager.SetClientConfigFileOverride(L""); // Discards the file that was found.
    EXPECT_TRUE(manager.FindClientConfigFile());
    EXPECT_EQ(Path(), Utf8(installation.ClientConfigFile()));
}

TEST_F(ClientConfigFile, ExtraDirectoriesAreSearchedInTheirOrderAndExpanded)
{
    const fs::path first = installation.MakeFolder(fs::path("host") / "first");
    const fs::path second = installation.MakeFolder("second");
    manager.AddClientConfigSearchPath(L"%ExePath%\\first");
    manager.AddClientConfigSearchPath(second.native());
    WriteFile(second / "Orlindex.config", "{}");
    EXPECT_TRUE(manager.FindClientConfigFile());
    EXPECT_EQ(Path(), Utf8(second / "Orlindex.config"));
    EXPECT_EQ(log.Take().at(0), Searching({installation.HostFolder(), library, first, second}));
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
    installation.WriteClientConfig("{}");
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
