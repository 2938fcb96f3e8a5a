// The location of the SSO server application.

#include <windows.h>

#include "Imports.h"
#include "LocateTest.h"
#include "support/MachineKey.h"

namespace OrlindexTest {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class ServerApplication : public LocateTest
{
protected:
    static LogLine Searching(const std::string& lines)
    {
        return InfoLine("Searching for SSO server app Pellwick.exe in the following paths:\n" + lines);
    }

    static LogLine NotFound(const std::string& lines)
    {
        return ErrorLine("Failed to find SSO server app Pellwick.exe in the following paths:\n" + lines);
    }

    static LogLine Found(const fs::path& folder)
    {
        return InfoLine("Found SSO server app at " + Utf8(folder / "Pellwick.exe"));
    }

    static LogLine NoKey(const std::string& code)
    {
        return InfoLine("Unable to get Pellwick path from registry, failed with error: " + code);
    }

    /// Reads a client config file before the test, so that the log starts with the search for the application.
    void Configure(const std::string& json)
    {
        installation.WriteClientConfig(json);
        ASSERT_TRUE(manager.LoadClientConfig());
        log.Take();
    }

    void ConfigureSearchPaths(const std::vector<fs::path>& paths)
    {
        std::string text;
        for (const fs::path& path : paths)
            text += (text.empty() ? "" : ";") + JsonPath(path);
        Configure(ServerMember("searchPaths", '"' + text + '"'));
    }

    std::string ServerPath() { return ToUtf8(manager.GetSSOServerAppPath()); }

    const fs::path first = installation.MakeFolder("first");
    const fs::path second = installation.MakeFolder("second");
};

TEST_F(ServerApplication, IsSearchedInTheDefaultPlacesWhereNothingIsConfigured)
{
    Configure("{}");
    EXPECT_FALSE(manager.FindSSOServerApp());
    const std::string lines = Lines({library, installation.HostFolder()});
    EXPECT_THAT(log.Take(), ElementsAre(NoKey("2"), Searching(lines), NotFound(lines)));
}

TEST_F(ServerApplication, TheFirstSearchLoadsTheClientConfig)
{
    installation.WriteClientConfig(ServerMember("searchPaths", '"' + JsonPath(first) + '"'));
    installation.InstallServerApplication(first);
    EXPECT_TRUE(manager.FindSSOServerApp());
    EXPECT_EQ(ServerPath(), Utf8(first));
    const std::vector<LogLine> lines = log.Take();
    EXPECT_EQ(lines.at(2), InfoLine("Loading client config file " + Utf8(installation.ClientConfigFile())));
    EXPECT_EQ(lines.back(), Found(first));
}

TEST_F(ServerApplication, WithNothingFoundTheTextsAreEmpty)
{
    Configure("{}");
    EXPECT_EQ(manager.GetSSOServerAppPath(), L"");
    EXPECT_EQ(manager.GetSSOServerAppExeDirPath(), L"");
    EXPECT_EQ(manager.GetSSOServerAppExeFile(), L"") << "not the bare name of the executable";
}

TEST_F(ServerApplication, WhatIsFoundIsKept)
{
    ConfigureSearchPaths({first});
    installation.InstallServerApplication(first);
    EXPECT_TRUE(manager.FindSSOServerApp());
    EXPECT_THAT(log.Take(), SizeIs(3));
    fs::remove(first / "Pellwick.exe");
    EXPECT_TRUE(manager.FindSSOServerApp());
    EXPECT_EQ(ToUtf8(manager.GetSSOServerAppPath()), Utf8(first));
    EXPECT_EQ(ToUtf8(manager.GetSSOServerAppExeDirPath()), Utf8(first));
    EXPECT_EQ(ToUtf8(manager.GetSSOServerAppExeFile()), Utf8(first / "Pellwick.exe"));
    EXPECT_THAT(log.Take(), IsEmpty());
}

TEST_F(ServerApplication, WhileItIsMissingEveryRequestSearchesAgain)
{
    ConfigureSearchPaths({first});
    EXPECT_EQ(ServerPath(), "");
    const auto lines = log.Take();
    EXPECT_THAT(lines, SizeIs(3));
    EXPECT_EQ(manager.GetSSOServerAppExeFile(), L"");
    EXPECT_EQ(log.Take(), lines);
    EXPECT_EQ(manager.GetSSOServerAppExeDirPath(), L"");
    EXPECT_EQ(log.Take(), lines);
    installation.InstallServerApplication(first);
    EXPECT_EQ(ServerPath(), Utf8(first));
}

TEST_F(ServerApplication, TheLibrarysDirectoryComesFirstThenTheHostsThenTheConfigured)
{
    ConfigureSearchPaths({first, second});
    const auto forget = [] {
        SSOPathResolver::Forget();
        return ToUtf8(SSOPathResolver::GetInstance()->GetSSOServerAppPath());
    };
    installation.InstallServerApplication(second);
    EXPECT_EQ(forget(), Utf8(second));
    installation.InstallServerApplication(first);
    EXPECT_EQ(forget(), Utf8(first));
    installation.InstallServerApplication(installation.HostFolder());
    EXPECT_EQ(forget(), Utf8(installation.HostFolder()));
    installation.InstallServerApplication(library);
    EXPECT_EQ(forget(), Utf8(library));
}

TEST_F(ServerApplication, ADirectoryOfThatNameCounts)
{
    ConfigureSearchPaths({first});
    fs::create_directory(first / "Pellwick.exe");
    EXPECT_EQ(ServerPath(), Utf8(first));
}

TEST_F(ServerApplication, AnEmptySearchPathDoesNotMeanTheCurrentDirectory)
{
    WriteFile("Pellwick.exe", "planted");
    Configure(ServerMember("searchPaths", R"(";")"));
    EXPECT_FALSE(manager.FindSSOServerApp());
}

TEST_F(ServerApplication, ADirectoryInAnyScriptSurvives)
{
    const fs::path folder = installation.MakeFolder(L"\u4E2D \u00E4");
    ConfigureSearchPaths({folder});
    installation.InstallServerApplication(folder);
    EXPECT_EQ(ServerPath(), Utf8(folder));
}

TEST_F(ServerApplication, ASearchPathThatRefersToTheApplicationItselfEndsWithoutValue)
{
    installation.WriteClientConfig(ServerMember("searchPaths", R"("%SSOServerAppPath%;%SSOServerAppExeFile%\\x")"));
    EXPECT_FALSE(manager.FindSSOServerApp());
    EXPECT_EQ(log.Take().back(),
              NotFound(Lines({library, installation.HostFolder(), "%SSOServerAppPath%", "%SSOServerAppExeFile%\\x"})));
}

TEST_F(ServerApplication, ASearchPathThatRefersToTheApplicationItselfDoesNotHideTheOthers)
{
    installation.WriteClientConfig(
        ServerMember("searchPaths", R"("%SSOServerAppExeDirPath%;)" + JsonPath(first) + '"'));
    installation.InstallServerApplication(first);
    EXPECT_TRUE(manager.FindSSOServerApp());
    EXPECT_EQ(ServerPath(), Utf8(first));
}

TEST_F(ServerApplication, ALoadOfTheConfigThatAsksForTheApplicationSearchesForNoName)
{
    // The names are set after the file was read, and reading it already uses them.
    installation.WriteClientConfig(ServerMember("searchPaths", R"("%SSOServerAppPath%;)" + JsonPath(first) + '"'));
    installation.InstallServerApplication(first);
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_THAT(log.Take(),
                testing::Contains(InfoLine("Searching for SSO server app  in the following paths:\n" +
                                           Lines({library, installation.HostFolder(), "%SSOServerAppPath%", first}))));
    EXPECT_TRUE(manager.FindSSOServerApp());
    EXPECT_EQ(ServerPath(), Utf8(first));
}

TEST_F(ServerApplication, TheCodeOfTheFailedOpeningIsLogged)
{
    Configure("{}");
    const RegistryOpenings openings([](const std::wstring&, REGSAM) { return ERROR_KEY_DELETED; });
    EXPECT_FALSE(manager.FindSSOServerApp());
    EXPECT_EQ(log.Take().at(0), NoKey("1018"));
    EXPECT_THAT(openings.Accesses(), ElementsAre(ReadAccess, ReadAccess)) << "the scan's, then the key's own";
}

TEST_F(ServerApplication, TheCodeIsASignedNumber)
{
    Configure("{}");
    const RegistryOpenings openings([](const std::wstring&, REGSAM) { return static_cast<LSTATUS>(0xC0000022); });
    EXPECT_FALSE(manager.FindSSOServerApp());
    EXPECT_EQ(log.Take().at(0), NoKey("-1073741790"));
}

TEST_F(ServerApplication, UnderWow64AFirstOpeningThatFailsIsRepeatedOnceInThe64BitView)
{
    Configure("{}");
    const Wow64Process wow64;
    const RegistryOpenings openings([](const std::wstring& path, REGSAM access) {
        EXPECT_EQ(path, L"SOFTWARE\\Kestrany\\Pellwick");
        return access == ReadAccess64 ? ERROR_ACCESS_DENIED : ERROR_FILE_NOT_FOUND;
    });
    EXPECT_FALSE(manager.FindSSOServerApp());
    EXPECT_EQ(log.Take().at(0), NoKey("5")) << "of the last attempt";
    EXPECT_THAT(openings.Accesses(), ElementsAre(ReadAccess, ReadAccess64, ReadAccess, ReadAccess64));
}

TEST_F(ServerApplication, AFailedWow64QueryCountsAsNo)
{
    Configure("{}");
    const FailingWow64Query query;
    const RegistryOpenings openings([](const std::wstring&, REGSAM) { return ERROR_FILE_NOT_FOUND; });
    EXPECT_FALSE(manager.FindSSOServerApp());
    EXPECT_THAT(openings.Accesses(), ElementsAre(ReadAccess, ReadAccess));
}

/// With the installer's key, which the whole machine shares.
class MachineKeyServerApplication : public ServerApplication
{
protected:
    static LogLine Latest(const fs::path& folder)
    {
        return InfoLine("Getting latest Pellwick path from registry: " + Utf8(folder));
    }

    static LogLine Own(const std::string& text) { return InfoLine("Getting Pellwick path from registry: " + text); }

    const MachineKey key;
};

TEST_F(MachineKeyServerApplication, Of1_9_0And1_10_0TheLocationOf1_10_0IsUsed)
{
    Configure("{}");
    key.AddVersion(L"1.9.0", first.native());
    key.AddVersion(L"1.10.0", second.native());
    installation.InstallServerApplication(first);
    installation.InstallServerApplication(second);
    EXPECT_EQ(ServerPath(), Utf8(second));
    EXPECT_THAT(log.Take(), ElementsAre(Latest(second), Searching(Lines({library, installation.HostFolder(), second})),
                                        Found(second)));
}

TEST_F(MachineKeyServerApplication, TheRegistrysDirectoryComesLast)
{
    Configure(R"({"ssoServer": {"searchPaths": ")" + JsonPath(first) + R"(", "supportBothLocalAndAdmin": false}})");
    key.AddVersion(L"1.0", second.native());
    installation.InstallServerApplication(second);
    installation.InstallServerApplication(first);
    EXPECT_EQ(ServerPath(), Utf8(first));
    EXPECT_THAT(log.Take(),
                ElementsAre(Latest(second), Searching(Lines({library, installation.HostFolder(), first, second})),
                            Found(first)));
}

TEST_F(MachineKeyServerApplication, WithSupportForBothTheRegistrysCopyWinsOverTheHosts)
{
    Configure(ServerMember("supportBothLocalAndAdmin", "true"));
    key.AddVersion(L"1.0", first.native());
    installation.InstallServerApplication(first);
    installation.InstallServerApplication(installation.HostFolder());
    EXPECT_EQ(ServerPath(), Utf8(first));
    EXPECT_THAT(log.Take(), ElementsAre(Latest(first), Searching(Lines({first, library, installation.HostFolder()})),
                                        Found(first)));
}

TEST_F(MachineKeyServerApplication, WithoutSupportForBothTheHostsCopyWins)
{
    Configure(ServerMember("supportBothLocalAndAdmin", "false"));
    key.AddVersion(L"1.0", first.native());
    installation.InstallServerApplication(first);
    installation.InstallServerApplication(installation.HostFolder());
    EXPECT_EQ(ServerPath(), Utf8(installation.HostFolder()));
}

TEST_F(MachineKeyServerApplication, TheKeysOwnLocationCountsWithoutVersions)
{
    Configure("{}");
    key.SetLocation(first.native());
    installation.InstallServerApplication(first);
    EXPECT_EQ(ServerPath(), Utf8(first));
    EXPECT_THAT(log.Take(), ElementsAre(Own(Utf8(first)), Searching(Lines({library, installation.HostFolder(), first})),
                                        Found(first)));
}

TEST_F(MachineKeyServerApplication, TheKeysOwnLocationComesLastEvenWithSupportForBoth)
{
    Configure(ServerMember("supportBothLocalAndAdmin", "true"));
    key.SetLocation(first.native());
    installation.InstallServerApplication(first);
    installation.InstallServerApplication(installation.HostFolder());
    EXPECT_EQ(ServerPath(), Utf8(installation.HostFolder()));
    EXPECT_EQ(log.Take().at(1), Searching(Lines({library, installation.HostFolder(), first})));
}

TEST_F(MachineKeyServerApplication, AVersionsLocationReplacesTheKeysOwn)
{
    Configure("{}");
    key.SetLocation(first.native());
    key.AddVersion(L"1.0", second.native());
    installation.InstallServerApplication(first);
    EXPECT_FALSE(manager.FindSSOServerApp());
    EXPECT_EQ(log.Take().at(1), Searching(Lines({library, installation.HostFolder(), second})));
}

TEST_F(MachineKeyServerApplication, VersionsWithoutLocationLeaveTheKeysOwn)
{
    Configure("{}");
    key.SetLocation(first.native());
    key.AddVersion(L"1.0");
    installation.InstallServerApplication(first);
    EXPECT_EQ(ServerPath(), Utf8(first));
}

TEST_F(MachineKeyServerApplication, AKeyWithoutLocationAddsNothingAndLogsNothing)
{
    Configure("{}");
    EXPECT_FALSE(manager.FindSSOServerApp());
    const std::string lines = Lines({library, installation.HostFolder()});
    EXPECT_THAT(log.Take(), ElementsAre(Searching(lines), NotFound(lines)));
}

TEST_F(MachineKeyServerApplication, AnOwnLocationOf1024BytesIsReadAndALongerOneIgnored)
{
    Configure("{}");
    const std::wstring longText(2000, L'x');
    key.SetLocation(REG_SZ, longText.data(), 1024);
    EXPECT_FALSE(manager.FindSSOServerApp());
    EXPECT_EQ(log.Take().at(0), Own(std::string(512, 'x')));
    for (const DWORD size : {1025, 1026, 4000})
    {
        key.SetLocation(REG_SZ, longText.data(), size);
        EXPECT_FALSE(manager.FindSSOServerApp());
        EXPECT_THAT(log.Take(), SizeIs(2)) << size;
    }
}

TEST_F(MachineKeyServerApplication, AnOwnLocationEndsAtItsFirstZeroOrWithTheValue)
{
    Configure("{}");
    const wchar_t zeros[] = L"C:\\one\0two";
    key.SetLocation(REG_SZ, zeros, sizeof zeros);
    manager.FindSSOServerApp();
    EXPECT_EQ(log.Take().at(0), Own("C:\\one"));
    key.SetLocation(REG_SZ, zeros, 4 * sizeof(wchar_t) + 1);
    manager.FindSSOServerApp();
    EXPECT_EQ(log.Take().at(0), Own("C:\\o"));
}

TEST_F(MachineKeyServerApplication, AnOwnLocationOfAnotherTypeIsIgnored)
{
    Configure("{}");
    const DWORD number = 7;
    key.SetLocation(REG_DWORD, &number, sizeof number);
    EXPECT_FALSE(manager.FindSSOServerApp());
    EXPECT_THAT(log.Take(), SizeIs(2));
}

TEST_F(MachineKeyServerApplication, ALocationMayHoldReferences)
{
    Configure("{}");
    const fs::path folder = installation.MakeFolder(fs::path("host") / "sub");
    key.AddVersion(L"1.0", L"%ExePath%\\sub");
    installation.InstallServerApplication(folder);
    EXPECT_EQ(ServerPath(), Utf8(folder));
    EXPECT_EQ(log.Take().at(0), Latest(L"%ExePath%\\sub")) << "logged as it stands in the registry";
}

TEST_F(MachineKeyServerApplication, ALocationThatRefersToTheApplicationItselfEndsWithoutValue)
{
    Configure("{}");
    key.AddVersion(L"1.0", L"%SSOServerAppPath%");
    EXPECT_FALSE(manager.FindSSOServerApp());
    EXPECT_EQ(log.Take().back(), NotFound(Lines({library, installation.HostFolder(), "%SSOServerAppPath%"})));
}

TEST_F(MachineKeyServerApplication, AnEmptyLocationDoesNotMeanTheCurrentDirectory)
{
    WriteFile("Pellwick.exe", "planted");
    Configure("{}");
    key.SetLocation(L"");
    EXPECT_FALSE(manager.FindSSOServerApp());
    EXPECT_EQ(log.Take().at(0), Own(""));
    key.AddVersion(L"1.0", L"");
    EXPECT_FALSE(manager.FindSSOServerApp());
    EXPECT_EQ(log.Take().at(0), Latest(""));
}

TEST_F(MachineKeyServerApplication, ALocationInAnyScriptSurvives)
{
    Configure("{}");
    const fs::path folder = installation.MakeFolder(L"\u4E2D \u00E4");
    key.AddVersion(L"1.0", folder.native());
    installation.InstallServerApplication(folder);
    EXPECT_EQ(ServerPath(), Utf8(folder));
}

TEST_F(MachineKeyServerApplication, UnderWow64AKeyOfThe64BitViewAloneIsRead)
{
    Configure("{}");
    key.SetLocation(first.native());
    installation.InstallServerApplication(first);
    const Wow64Process wow64;
    const RegistryOpenings openings([](const std::wstring&, REGSAM access) {
        return access == ReadAccess64 ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
    });
    EXPECT_EQ(ServerPath(), Utf8(first));
    EXPECT_THAT(openings.Accesses(), ElementsAre(ReadAccess, ReadAccess64, ReadAccess, ReadAccess64));
}

} // namespace OrlindexTest
