// The client config file in the private interface, and the file that a host sets.

#include "orlindex/SSOClientPrivate.h"
#include "support/HostTest.h"

namespace OrlindexTest {

namespace fs = std::filesystem;
using namespace Kestrany::IdentityServices;
using testing::ElementsAre;

namespace {

std::string ConfigFile()
{
    return ToUtf8(SSOClientPrivate::GetSSOClientConfigFile());
}

std::string Override()
{
    return ToUtf8(SSOClientPrivate::GetSSOClientConfigFileOverride());
}

LogLine OverrideSet(const std::string& path)
{
    return {Info, "Client config file override set to " + path};
}

LogLine OverrideRefused(const std::string& path, const std::string& file)
{
    return {Error, "Failed to set client config file override " + path + " since client config file " + file +
                       " is already loaded"};
}

} // namespace

class PrivateConfigFile : public HostTest
{
protected:
    /// Loads the plugin, whose logger receives all messages so far; returns those about overrides.
    std::vector<LogLine> OverrideMessages()
    {
        SSOClientPrivate::ClearEventQueue();
        std::vector<LogLine> messages;
        for (const LogLine& line : Plugin().Log())
            if (line.text.find("override") != std::string::npos)
                messages.push_back(line);
        return messages;
    }

    /// A valid config file for the same server application.
    fs::path OtherConfigFile(const std::string& name) const
    {
        const fs::path file = installation.MakeFolder("other") / name;
        WriteFile(file, ReadFile(installation.ClientConfigFile()));
        return file;
    }
};

TEST_F(PrivateConfigFile, IsFoundAndKept)
{
    installation.InstallWithoutPlugin();
    EXPECT_EQ(ConfigFile(), Utf8(installation.ClientConfigFile()));
    fs::remove(installation.ClientConfigFile());
    EXPECT_EQ(ConfigFile(), Utf8(installation.ClientConfigFile()));
    EXPECT_EQ(Override(), "");
}

TEST_F(PrivateConfigFile, WithoutAFileItIsTheBareName)
{
    EXPECT_EQ(ConfigFile(), "Orlindex.config");
}

TEST_F(PrivateConfigFile, AnOverrideBeforeTheFileIsReadIsStoredAndLogged)
{
    InstallPlugin();
    const fs::path file = OtherConfigFile("named.json");
    SSOClientPrivate::SetSSOClientConfigFileOverride(file.native());
    EXPECT_EQ(Override(), Utf8(file));
    EXPECT_EQ(ConfigFile(), Utf8(file));
    EXPECT_THAT(OverrideMessages(), ElementsAre(OverrideSet(Utf8(file)),
                                                LogLine{Info, "Found client config file override at " + Utf8(file)}));
}

TEST_F(PrivateConfigFile, AnOverrideBeforeLoadingEmptiesAPathThatWasComputed)
{
    InstallPlugin();
    EXPECT_EQ(ConfigFile(), Utf8(installation.ClientConfigFile()));
    const fs::path file = OtherConfigFile("named.json");
    SSOClientPrivate::SetSSOClientConfigFileOverride(file.native());
    EXPECT_EQ(ConfigFile(), Utf8(file)) << "computed again";
}

TEST_F(PrivateConfigFile, ALaterOverrideReplacesAnEarlierOne)
{
    InstallPlugin();
    const fs::path second = OtherConfigFile("second.json");
    SSOClientPrivate::SetSSOClientConfigFileOverride(L"C:\\first.json");
    SSOClientPrivate::SetSSOClientConfigFileOverride(second.native());
    EXPECT_EQ(Override(), Utf8(second));
    EXPECT_EQ(OverrideMessages().at(0), OverrideSet("C:\\first.json"));
    EXPECT_EQ(OverrideMessages().at(1), OverrideSet(Utf8(second)));
}

TEST_F(PrivateConfigFile, AnOverrideToAMissingFileIsStoredUnchangedAndReportedLater)
{
    InstallPlugin();
    CapturedOutput output;
    SSOClientPrivate::SetSSOClientConfigFileOverride(L"C:/missing\\.\\x%ExePath%");
    EXPECT_EQ(Override(), "C:/missing\\.\\x%ExePath%");
    EXPECT_EQ(ConfigFile(), "C:/missing\\.\\x%ExePath%");
    EXPECT_EQ(output.Take(), "Failed to find client config file override C:/missing\\.\\x%ExePath%\n");
}

TEST_F(PrivateConfigFile, AnEmptyPathClearsTheOverride)
{
    InstallPlugin();
    SSOClientPrivate::SetSSOClientConfigFileOverride(L"C:\\first.json");
    EXPECT_EQ(Override(), "C:\\first.json");
    SSOClientPrivate::SetSSOClientConfigFileOverride(L"");
    EXPECT_EQ(Override(), "");
    EXPECT_EQ(ConfigFile(), Utf8(installation.ClientConfigFile()));
    EXPECT_THAT(OverrideMessages(), ElementsAre(OverrideSet("C:\\first.json"), OverrideSet("")));
}

TEST_F(PrivateConfigFile, AnOverrideAfterTheFileWasReadIsRefusedAndChangesNothing)
{
    InstallPlugin();
    const fs::path file = OtherConfigFile("named.json");
    SSOClientPrivate::SetSSOClientConfigFileOverride(file.native());
    SSOClientPrivate::ClearEventQueue(); // Reads the file and loads the plugin.
    Plugin().ClearJournal();
    SSOClientPrivate::SetSSOClientConfigFileOverride(L"C:\\late \u4E2D.json");
    SSOClientPrivate::SetSSOClientConfigFileOverride(L"");
    EXPECT_EQ(Override(), Utf8(file));
    EXPECT_EQ(ConfigFile(), Utf8(file));
    EXPECT_THAT(Plugin().Log(), ElementsAre(OverrideRefused("C:\\late \xE4\xB8\xAD.json", Utf8(file)),
                                            OverrideRefused("", Utf8(file))));
}

TEST_F(PrivateConfigFile, AnOverrideAfterAFailedAttemptToReadTheFileIsRefusedToo)
{
    EXPECT_EQ(SSOClientPrivate::GetSSOServerAppPath(), L""); // Any call for the server application reads the file.
    CapturedOutput output;
    SSOClientPrivate::SetSSOClientConfigFileOverride(L"C:\\late.json");
    EXPECT_EQ(Override(), "");
    EXPECT_EQ(ConfigFile(), "Orlindex.config");
    EXPECT_EQ(output.Take(), OverrideRefused("C:\\late.json", "Orlindex.config").text + '\n');
}

TEST_F(PrivateConfigFile, AnOverrideAfterAMalformedFileWasReadIsRefusedToo)
{
    installation.WriteClientConfig("malformed");
    SSOClientPrivate::GetSSOServerAppPath();
    CapturedOutput output;
    SSOClientPrivate::SetSSOClientConfigFileOverride(L"C:\\late.json");
    EXPECT_EQ(Override(), "");
    EXPECT_EQ(ConfigFile(), Utf8(installation.ClientConfigFile()));
    EXPECT_EQ(output.Take(), OverrideRefused("C:\\late.json", Utf8(installation.ClientConfigFile())).text + '\n');
}

TEST_F(PrivateConfigFile, AnOverrideIsForTheManagerOfItsTimeOnly)
{
    InstallPlugin();
    const fs::path file = OtherConfigFile("named.json");
    SSOClientPrivate::SetSSOClientConfigFileOverride(file.native());
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    EXPECT_EQ(Override(), "");
    EXPECT_EQ(ConfigFile(), Utf8(installation.ClientConfigFile()));
    SSOClientPrivate::SetSSOClientConfigFileOverride(file.native());
    EXPECT_EQ(ConfigFile(), Utf8(file)) << "nothing was read yet by the new one";
}

} // namespace OrlindexTest
