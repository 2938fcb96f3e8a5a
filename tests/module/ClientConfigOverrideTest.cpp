// The client config file: how a caller sets its path.

#include "ClientConfigFileTest.h"

namespace OrlindexTest {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(ClientConfigFile, AnOverrideIsFoundWithoutSearch)
{
    const fs::path file = installation.MakeFolder("elsewhere") / L"\u4E2D.json";
    WriteFile(file, ServerMember("bundleId", R"("elsewhere")"));
    installation.WriteClientConfig(ServerMember("bundleId", R"("host")"));
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
    installation.WriteClientConfig(ServerMember("bundleId", R"("host")"));
    const fs::path file = installation.HostFolder() / "missing.json";
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
    const fs::path folder = installation.MakeFolder("folder");
    manager.SetClientConfigFileOverride(folder.native());
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_THAT(log.Take(),
                ElementsAre(OverrideSet(folder), InfoLine("Found client config file override at " + Utf8(folder)),
                            Loading(folder), Invalid(folder)));
}

TEST_F(ClientConfigFile, AnOverrideDiscardsWhatWasFoundBefore)
{
    installation.WriteClientConfig("{}");
    EXPECT_TRUE(manager.FindClientConfigFile());
    const fs::path file = installation.HostFolder() / "other.json";
    WriteFile(file, "{}");
    manager.SetClientConfigFileOverride(file.native());
    EXPECT_TRUE(manager.FindClientConfigFile());
    EXPECT_EQ(Path(), Utf8(file));
}

TEST_F(ClientConfigFile, TheLastOverrideCounts)
{
    for (const char* name : {"first.json", "second.json"})
    {
        WriteFile(installation.HostFolder() / name, "{}");
        manager.SetClientConfigFileOverride((installation.HostFolder() / name).native());
        EXPECT_TRUE(manager.FindClientConfigFile());
    }
    EXPECT_EQ(Path(), Utf8(installation.HostFolder() / "second.json"));
    EXPECT_EQ(ToUtf8(manager.ClientConfigFileOverride()), Path());
}

TEST_F(ClientConfigFile, AnEmptyOverrideMeansTheDefaultPlaces)
{
    manager.SetClientConfigFileOverride(L"C:\\missing.json");
    manager.SetClientConfigFileOverride(L"");
    log.Take();
    installation.WriteClientConfig("{}");
    EXPECT_TRUE(manager.FindClientConfigFile());
    EXPECT_EQ(log.Take().at(0), Searching(DefaultPlaces()));
}

TEST_F(ClientConfigFile, AnOverrideAfterTheConfigWasAskedForIsRefusedAndChangesNothing)
{
    installation.WriteClientConfig(ServerMember("bundleId", R"("host")"));
    manager.GetSSOServerAppPath(); // Any call that needs a value loads the file.
    log.Take();
    const fs::path file = installation.HostFolder() / "late.json";
    WriteFile(file, ServerMember("bundleId", R"("late")"));
    manager.SetClientConfigFileOverride(file.native());
    EXPECT_THAT(log.Take(), ElementsAre(ErrorLine("Failed to set client config file override " + Utf8(file) +
                                                  " since client config file " + Utf8(installation.ClientConfigFile()) +
                                                  " is already loaded")));
    EXPECT_EQ(Path(), Utf8(installation.ClientConfigFile()));
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
