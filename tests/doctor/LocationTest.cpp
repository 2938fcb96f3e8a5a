// Failures up to the choice of the plugin module: the client config file, the server application, the version
// compatibility file and its entries.

#include "DoctorTest.h"

namespace OrlindexTest {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr char GoodRange[] = R"({"minVersion": "1.11", "maxVersion": "1.11"})";

} // namespace

class DoctorLocation : public DoctorTest
{
protected:
    void InstallWithConfig(const std::string& json) const
    {
        installation.Install();
        installation.WriteClientConfig(json);
    }

    void InstallWithEntry(const std::string& json) const
    {
        installation.Install();
        installation.WriteCompatibilityFile(R"({"ssoClientPlugin": [)" + json + "]}");
    }

    void ExpectDefect(const std::string& defect, const std::string& words) const
    {
        const DoctorReport report =
            ExpectFailure(ExitCode::CompatibilityEntriesDefective, "compatibility-entries", words);
        EXPECT_THAT(report.Results("compatibility-entries"), ElementsAre("ssoClientPlugin[0]: " + defect));
        EXPECT_THAT(report.Remedy(), HasSubstr(Utf8(installation.CompatibilityFile())));
    }
};

TEST_F(DoctorLocation, EachStepOfACompleteInstallationIsReported)
{
    installation.Install();
    const DoctorReport report = ExpectStart();
    EXPECT_THAT(report.Results("client-config"),
                ElementsAre("host's folder: found", "library's folder: not-searched", "client config file: found",
                            "contents: read", "ssoServer: set", "bundleId: set",
                            "VersionCompatibilityConfigfilePath: default", "searchPaths: set",
                            "supportBothLocalAndAdmin: default"));
    EXPECT_EQ(report.Find("client-config", "bundleId")["value"], "com.kestrany.test");
    EXPECT_EQ(report.Find("client-config", "bundleId")["source"],
              Utf8(installation.ClientConfigFile()) + ", key bundleId");
    EXPECT_THAT(report.Results("registry"), ElementsAre("key: absent"));
    EXPECT_THAT(report.Results("server-application"),
                ElementsAre("library's folder: not-there", "host's folder: not-there", "client config file: found",
                            "server application: found"));
    EXPECT_THAT(report.Results("compatibility-entries"), ElementsAre("ssoClientPlugin[0]: chosen"));
    EXPECT_THAT(report.Results("interfaces"),
                ElementsAre("ISSOClientModule: present", "ISSOServerManager: present", "ISSOClient: present",
                            "ISSOClientPrivate: present", "obtain-interfaces: done"));
}

TEST_F(DoctorLocation, NamesInAnyScriptAreReportedUnchanged)
{
    installation.Install();
    const fs::path folder = installation.MakeFolder(L"\u30B5\u30FC\u30D0\u30FC \u0416\u00E9");
    installation.InstallServerApplication(folder);
    installation.CopyPlugin("good", folder / "PellwickClient.dll");
    fs::copy_file(installation.CompatibilityFile(), folder / installation.CompatibilityFile().filename());
    installation.WriteClientConfig(R"({"ssoServer": {"searchPaths": ")" + JsonPath(folder) + R"("}})");
    const DoctorReport report = ExpectStart();
    EXPECT_EQ(report.Find("module-file", "plugin module")["value"], Utf8(folder / "PellwickClient.dll"));
    EXPECT_THAT(RunTool().output, HasSubstr(Utf8(folder / "PellwickClient.dll")));
}

TEST_F(DoctorLocation, WithoutClientConfigFileAndRegistryTheServerApplicationIsNotFound)
{
    const DoctorReport report =
        ExpectFailure(ExitCode::ServerApplicationNotFound, "server-application", "there is no client config file");
    EXPECT_THAT(report.Results("client-config"), ElementsAre("host's folder: not-there", "library's folder: not-there",
                                                             "client config file: not-found"));
    EXPECT_EQ(report.MarkOf("client-config"), "ok") << "it is optional";
    EXPECT_EQ(report.MarkOf("server-application"), "failed");
    EXPECT_THAT(report.Remedy(), HasSubstr(Utf8(installation.ClientConfigFile())));
    EXPECT_THAT(report.Remedy(), HasSubstr("HKEY_LOCAL_MACHINE\\SOFTWARE\\Kestrany\\Pellwick"));
}

TEST_F(DoctorLocation, AServerApplicationBesideTheHostNeedsNoClientConfigFile)
{
    installation.Install();
    fs::remove(installation.ClientConfigFile());
    for (const char* const name : {"Pellwick.exe", "PellwickClient.dll", "TALIXVersionCompatibility.config"})
        fs::copy_file(installation.ServerFolder() / name, installation.HostFolder() / name);
    ExpectStart();
}

TEST_F(DoctorLocation, AClientConfigFileInTheToolsCurrentDirectoryIsNotRead)
{
    installation.Install();
    const fs::path folder = installation.MakeFolder("shell");
    fs::rename(installation.ClientConfigFile(), folder / "Orlindex.config");
    fs::current_path(folder);
    for (const std::vector<std::wstring>& arguments : {std::vector<std::wstring>(), {L"--load"}})
    {
        const DoctorReport report = Report(arguments);
        EXPECT_EQ(report.Run().exitCode, 13U) << report.Run().output;
        EXPECT_THAT(report.Cause(), HasSubstr("there is no client config file"));
    }
    WriteFile(folder / "Orlindex.config", "no JSON");
    EXPECT_EQ(Report().Run().exitCode, 13U);
}

TEST_F(DoctorLocation, ARelativeHostFolderIsRelativeToTheCurrentDirectory)
{
    installation.Install();
    fs::current_path(installation.HostFolder().parent_path());
    const DoctorReport report(
        RunProgram(Tool(), {L"--json", L"--load", L"--host", installation.HostFolder().filename().native()}));
    EXPECT_EQ(report.Run().exitCode, 0U) << report.Run().output;
    EXPECT_EQ(report.Root()["host"], Utf8(installation.HostFolder()));
}

TEST_F(DoctorLocation, AClientConfigFileThatIsNotJsonIsReportedWithLineAndColumn)
{
    InstallWithConfig("{\n  \"ssoServer\": {\n    \"searchPaths\" \"C:\\\\x\"\n  }\n}\n");
    const DoctorReport report = ExpectFailure(ExitCode::ClientConfigInvalid, "client-config", "line 3, column 19");
    EXPECT_THAT(report.Cause(), HasSubstr(Utf8(installation.ClientConfigFile())));
    EXPECT_EQ(report.Find("client-config", "contents")["result"], "invalid");
}

TEST_F(DoctorLocation, AnUnreadableClientConfigFileIsReported)
{
    installation.Install();
    fs::remove(installation.ClientConfigFile());
    installation.MakeFolder("host/Orlindex.config");
    const DoctorReport report = ExpectFailure(ExitCode::ClientConfigInvalid, "client-config", "cannot be read");
    EXPECT_EQ(report.Find("client-config", "contents")["result"], "unreadable");
}

TEST_F(DoctorLocation, AnInvalidClientConfigFileIsAWarningIfTheServerApplicationIsFound)
{
    InstallWithConfig("no JSON");
    for (const char* const name : {"Pellwick.exe", "PellwickClient.dll", "TALIXVersionCompatibility.config"})
        fs::copy_file(installation.ServerFolder() / name, installation.HostFolder() / name);
    EXPECT_EQ(ExpectStart().MarkOf("client-config"), "warning");
}

TEST_F(DoctorLocation, ASettingOfTheWrongTypeIsReportedAsIgnored)
{
    InstallWithConfig(R"({"ssoServer": {"searchPaths": [")" + JsonPath(installation.ServerFolder()) + R"("]}})");
    const DoctorReport report =
        ExpectFailure(ExitCode::ServerApplicationNotFound, "server-application", "names no folder with it");
    EXPECT_EQ(report.Find("client-config", "searchPaths")["result"], "wrong-type");
    EXPECT_EQ(report.MarkOf("client-config"), "warning");
}

TEST_F(DoctorLocation, VariablesWithoutValueAndZeroCharactersAreReportedAsNotSearched)
{
    const std::string server = JsonPath(installation.ServerFolder());
    // If the platform ended the path at the zero character, it would find the server application there.
    InstallWithConfig(R"({"ssoServer": {"searchPaths": ";%Nothing%;)" + server + R"(\\Pellwick.exe\u0000;)" + server +
                      R"("}})");
    EXPECT_THAT(ExpectStart().Results("server-application"),
                ElementsAre("library's folder: not-there", "host's folder: not-there", "client config file: no-value",
                            "client config file: embedded-zero", "client config file: found",
                            "server application: found"));
}

TEST_F(DoctorLocation, ASearchPathThatRefersToTheSearchIsReportedOnce)
{
    InstallWithConfig(R"({"ssoServer": {"searchPaths": "%SSOServerAppPath%;)" + JsonPath(installation.ServerFolder()) +
                      R"("}})");
    const DoctorReport report = ExpectStart();
    EXPECT_THAT(report.Results("registry"), ElementsAre("key: absent"));
    EXPECT_EQ(report.Find("server-application", "server application")["result"], "found");
}

TEST_F(DoctorLocation, AMissingVersionCompatibilityFileIsReportedWithTheFolder)
{
    installation.Install();
    fs::remove(installation.CompatibilityFile());
    const DoctorReport report = ExpectFailure(ExitCode::CompatibilityFileNotFound, "compatibility-file",
                                              "There is no TALIXVersionCompatibility.config");
    EXPECT_THAT(report.Cause(), HasSubstr(Utf8(installation.ServerFolder())));
}

TEST_F(DoctorLocation, TheCauseOfAMissingVersionCompatibilityFileNamesAnInvalidClientConfigFile)
{
    InstallWithConfig("no JSON");
    installation.InstallServerApplication(installation.HostFolder());
    const DoctorReport report =
        ExpectFailure(ExitCode::CompatibilityFileNotFound, "compatibility-file", "is not used (");
    EXPECT_THAT(report.Cause(), HasSubstr(Utf8(installation.ClientConfigFile())));
    EXPECT_THAT(report.Remedy(), HasSubstr("Mend \"" + Utf8(installation.ClientConfigFile())));
}

TEST_F(DoctorLocation, AVersionCompatibilityFileInTheConfiguredFolderIsFound)
{
    installation.Install();
    const fs::path folder = installation.MakeFolder("elsewhere");
    fs::rename(installation.CompatibilityFile(), folder / installation.CompatibilityFile().filename());
    installation.WriteClientConfig(R"({"ssoServer": {"searchPaths": ")" + JsonPath(installation.ServerFolder()) +
                                   R"(", "VersionCompatibilityConfigfilePath": ")" + JsonPath(folder) + R"("}})");
    EXPECT_THAT(ExpectStart().Results("compatibility-file"),
                ElementsAre("server application: not-there", "version compatibility file: not-found",
                            "client config file: found", "version compatibility file: found", "contents: read"));
}

TEST_F(DoctorLocation, ARepeatedSearchIsReportedOnce)
{
    installation.Install();
    fs::remove(installation.ServerFolder() / "Pellwick.exe");
    installation.WriteClientConfig(R"({"ssoServer": {"VersionCompatibilityConfigfilePath": ")" +
                                   JsonPath(installation.ServerFolder()) + R"("}})");
    installation.WriteCompatibilityFile({CompatibilityEntry{"%SSOServerAppPath%\\a.dll", "1"},
                                         CompatibilityEntry{Utf8(installation.PluginFile()), "2"}});
    const DoctorReport report = ExpectStart();
    EXPECT_EQ(report.MarkOf("server-application"), "failed") << "the start-up goes on without it";
    int searches = 0;
    for (const Json::Value& step : report.Root()["steps"])
        searches += step["step"] == "server-application" ? 1 : 0;
    EXPECT_EQ(searches, 1);
}

TEST_F(DoctorLocation, AVersionCompatibilityFileThatIsNotJsonIsReportedWithLineAndColumn)
{
    installation.Install();
    installation.WriteCompatibilityFile("{\"ssoClientPlugin\": [}");
    const DoctorReport report =
        ExpectFailure(ExitCode::CompatibilityFileInvalid, "compatibility-file", "line 1, column");
    EXPECT_THAT(report.Cause(), HasSubstr(Utf8(installation.CompatibilityFile())));
}

TEST_F(DoctorLocation, ATooDeeplyNestedVersionCompatibilityFileIsInvalid)
{
    installation.Install();
    installation.WriteCompatibilityFile(std::string(2000, '['));
    ExpectFailure(ExitCode::CompatibilityFileInvalid, "compatibility-file", "no JSON");
}

TEST_F(DoctorLocation, AVersionCompatibilityFileWithoutEntriesIsEmpty)
{
    installation.Install();
    for (const char* const json : {"{}", R"({"ssoClientPlugin": []})", R"({"ssoClientPlugin": 7})", "[]"})
    {
        installation.WriteCompatibilityFile(json);
        ExpectFailure(ExitCode::CompatibilityListEmpty, "compatibility-file", "missing or empty");
    }
}

TEST_F(DoctorLocation, AnEntryWithoutModuleIsReported)
{
    InstallWithEntry(R"({"modulePath": "x.dll", "version": "2", "compatibleSsoServicesVersion": )" +
                     std::string(GoodRange) + "}");
    ExpectDefect("module-blank", "\"module\"");
}

TEST_F(DoctorLocation, AnEntryWithoutModulePathIsReported)
{
    InstallWithEntry(R"({"module": "P", "modulePathWoW64": "x.dll", "version": "2", "compatibleSsoServicesVersion": )" +
                     std::string(GoodRange) + "}");
    ExpectDefect("module-path-blank", "\"modulePath\"");
}

TEST_F(DoctorLocation, AnEntryWithoutVersionIsReported)
{
    InstallWithEntry(R"({"module": "P", "modulePath": "x.dll", "compatibleSsoServicesVersion": )" +
                     std::string(GoodRange) + "}");
    ExpectDefect("version-blank", "\"version\"");
}

TEST_F(DoctorLocation, AnEntryWithoutRangeIsReported)
{
    InstallWithEntry(R"({"module": "P", "modulePath": "x.dll", "version": "2"})");
    ExpectDefect("range-missing", "is missing");
}

TEST_F(DoctorLocation, AnEntryWithAnEmptyRangeIsReported)
{
    InstallWithEntry(R"({"module": "P", "modulePath": "x.dll", "version": "2", "compatibleSsoServicesVersion": {}})");
    ExpectDefect("range-invalid", "names no version");
}

TEST_F(DoctorLocation, EntriesForOtherVersionsAreReportedWithTheirRanges)
{
    installation.Install();
    const std::string path = "%SSOServerAppPath%\\PellwickClient.dll";
    installation.WriteCompatibilityFile({CompatibilityEntry{path, "2", R"({"minVersion": "1.12"})"},
                                         CompatibilityEntry{path, "3", R"({"maxVersion": "1.11.13.2"})"},
                                         CompatibilityEntry{path, "4", R"({"versions": ["1.10", "1.12"]})"}});
    const DoctorReport report =
        ExpectFailure(ExitCode::NoEntryServes, "compatibility-entries", "ssoClientPlugin[1] serves max 1.11.13.2");
    EXPECT_THAT(report.Results("compatibility-entries"),
                ElementsAre("ssoClientPlugin[0]: below-minimum", "ssoClientPlugin[1]: above-maximum",
                            "ssoClientPlugin[2]: not-listed"));
}

TEST_F(DoctorLocation, EachEntryIsReportedWithTheReasonOfTheChoice)
{
    installation.Install();
    const std::string path = "%SSOServerAppPath%\\PellwickClient.dll";
    installation.WriteCompatibilityFile(
        {CompatibilityEntry{path, "1.9"}, CompatibilityEntry{path, "1.10"}, CompatibilityEntry{path, "1.10"},
         CompatibilityEntry{path, "9", R"({"minVersion": "2"})"}, CompatibilityEntry{path, "", GoodRange}});
    const DoctorReport report = ExpectStart();
    EXPECT_THAT(report.Results("compatibility-entries"),
                testing::UnorderedElementsAre("ssoClientPlugin[0]: not-higher", "ssoClientPlugin[1]: chosen",
                                              "ssoClientPlugin[2]: not-higher", "ssoClientPlugin[3]: below-minimum",
                                              "ssoClientPlugin[4]: version-blank"));
    EXPECT_EQ(report.MarkOf("compatibility-entries"), "warning");
}

} // namespace OrlindexTest
