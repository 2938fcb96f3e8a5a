// The client config file: how it is read, and what it sets.

#include <new>

#include "ClientConfigFileTest.h"
#include "base/Files.h"
#include "support/Handle.h"

namespace OrlindexTest {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(ClientConfigFile, EveryKeyIsStored)
{
    installation.WriteClientConfig(R"({"other": 1, "ssoServer": {"bundleId": "com.kestrany.)"
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
    installation.WriteClientConfig(ServerMember("searchPaths", R"("%ExePath%;C:\\second")"));
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_THAT(manager.Settings().searchPaths, ElementsAre(installation.HostFolder().native(), L"C:\\second"));
}

TEST_F(ClientConfigFile, EmptyEntriesOfSearchPathsAreDropped)
{
    installation.WriteClientConfig(ServerMember("searchPaths", R"(";C:\\one;;%Unknown%; ;")"));
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_THAT(manager.Settings().searchPaths, ElementsAre(L"C:\\one", L"%Unknown%", L" "));
}

TEST_F(ClientConfigFile, AMegabyteOfEmptyEntriesCostsNoMessageOfThatSize)
{
    installation.WriteClientConfig(ServerMember("searchPaths", '"' + std::string(1024 * 1024, ';') + '"'));
    EXPECT_FALSE(manager.FindSSOServerApp());
    EXPECT_THAT(manager.Settings().searchPaths, IsEmpty());
    std::size_t size = 0;
    for (const LogLine& line : log.Take())
        size += line.text.size();
    EXPECT_LT(size, 10000u);
}

TEST_F(ClientConfigFile, SupportBothLocalAndAdminIsLoggedAsYes)
{
    installation.WriteClientConfig(ServerMember("supportBothLocalAndAdmin", "true"));
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_THAT(log.Take(), ElementsAre(Searching(DefaultPlaces()), Found(installation.ClientConfigFile()),
                                        Loading(installation.ClientConfigFile()), Support("Yes")));
}

TEST_F(ClientConfigFile, WithoutSupportBothLocalAndAdminNoIsLogged)
{
    installation.WriteClientConfig(ServerMember("supportBothLocalAndAdmin", "false"));
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_EQ(log.Take().back(), Support("No"));
}

TEST_F(ClientConfigFile, AMissingFileLeavesTheFixedSettingsAlone)
{
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_THAT(log.Take(), ElementsAre(Searching(DefaultPlaces()), NotFound(DefaultPlaces())));
    ExpectNothingConfigured();
}

TEST_F(ClientConfigFile, TheFixedSettingsHoldHoweverTheReadingEnds)
{
    installation.WriteClientConfig("{}");
    for (const std::wstring failing : {L"Searching", L"Found", L"Loading", L"Configuration"})
    {
        SSOPathResolver started({"1"}, [&failing](const std::wstring& message, Kestrany::TALIXLog::LogLevel) {
            if (message.compare(0, failing.size(), failing) == 0)
                throw std::bad_alloc();
        });
        EXPECT_THROW(started.LoadClientConfig(), std::bad_alloc);
        ExpectFixedSettings(started);
        EXPECT_FALSE(started.LoadClientConfig()) << "it is read once";
    }
}

TEST_F(ClientConfigFile, ASecondLoadReturnsFalseAndReadsNothing)
{
    installation.WriteClientConfig(ServerMember("bundleId", R"("first")"));
    EXPECT_TRUE(manager.LoadClientConfig());
    log.Take();
    installation.WriteClientConfig(ServerMember("bundleId", R"("second")"));
    EXPECT_FALSE(manager.LoadClientConfig());
    EXPECT_EQ(manager.Settings().bundleId, L"first");
    EXPECT_THAT(log.Take(), IsEmpty());
}

TEST_F(ClientConfigFile, AMissingFileIsNotLookedForAgain)
{
    EXPECT_TRUE(manager.LoadClientConfig());
    log.Take();
    installation.WriteClientConfig(ServerMember("bundleId", R"("late")"));
    EXPECT_FALSE(manager.LoadClientConfig());
    EXPECT_EQ(manager.Settings().bundleId, L"");
    EXPECT_THAT(log.Take(), IsEmpty());
}

TEST_F(ClientConfigFile, AFileThatWasFoundBeforeIsReadWithoutAnotherSearch)
{
    installation.WriteClientConfig("{}");
    manager.FindClientConfigFile();
    log.Take();
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_THAT(log.Take(), ElementsAre(Loading(installation.ClientConfigFile()), Support("No")));
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

TEST_F(ClientConfigFile, ANumberTooLargeCostsItsKeyAlone)
{
    installation.WriteClientConfig(R"({"timeout": 1e999, "ssoServer": {"bundleId": )" + std::string(2000, '9') +
                                   R"(, "searchPaths": "C:\\one", "supportBothLocalAndAdmin": true}})");
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_EQ(log.Take().back(), Support("Yes"));
    EXPECT_EQ(manager.Settings().bundleId, L"");
    EXPECT_THAT(manager.Settings().searchPaths, ElementsAre(L"C:\\one"));
}

TEST_F(ClientConfigFile, ACommaAfterTheLastKeyIsRefused)
{
    ExpectInvalid(R"({"ssoServer": {"bundleId": "b",}})");
}

TEST_F(ClientConfigFile, TooLargeIsRefused)
{
    using Kestrany::IdentityServices::LargestConfigFile;
    const std::string json = ServerMember("bundleId", R"("large")");
    ExpectInvalid(json + std::string(LargestConfigFile + 1 - json.size(), ' '));
}

TEST_F(ClientConfigFile, OfTheLargestSizeIsRead)
{
    using Kestrany::IdentityServices::LargestConfigFile;
    const std::string json = ServerMember("bundleId", R"("large")");
    installation.WriteClientConfig(json + std::string(LargestConfigFile - json.size(), ' '));
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_EQ(manager.Settings().bundleId, L"large");
}

TEST_F(ClientConfigFile, ADirectoryInItsPlaceIsFoundAndRefused)
{
    fs::create_directory(installation.ClientConfigFile());
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_THAT(log.Take(),
                ElementsAre(Searching(DefaultPlaces()), Found(installation.ClientConfigFile()),
                            Loading(installation.ClientConfigFile()), Invalid(installation.ClientConfigFile())));
    ExpectNothingConfigured();
}

TEST_F(ClientConfigFile, AFileThatAnotherKeepsToItselfIsRefused)
{
    installation.WriteClientConfig("{}");
    const Handle keeper(
        CreateFileW(installation.ClientConfigFile().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_NE(keeper.get(), INVALID_HANDLE_VALUE);
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_EQ(log.Take().back(), Invalid(installation.ClientConfigFile()));
    ExpectNothingConfigured();
}

TEST_F(ClientConfigFile, AFileThatAnotherStillWritesToIsRead)
{
    installation.WriteClientConfig(ServerMember("bundleId", R"("shared")"));
    const Handle writer(CreateFileW(installation.ClientConfigFile().c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, 0, nullptr));
    ASSERT_NE(writer.get(), INVALID_HANDLE_VALUE);
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_EQ(manager.Settings().bundleId, L"shared");
}

TEST_F(ClientConfigFile, AFileThatAnotherMayDeleteIsRead)
{
    installation.WriteClientConfig(ServerMember("bundleId", R"("shared")"));
    const Handle deleter(CreateFileW(installation.ClientConfigFile().c_str(), DELETE,
                                     FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING, 0,
                                     nullptr));
    ASSERT_NE(deleter.get(), INVALID_HANDLE_VALUE);
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
    installation.WriteClientConfig("\xEF\xBB\xBF// ours\r\n" + ServerMember("bundleId", R"("b")") + " // end");
    EXPECT_TRUE(manager.LoadClientConfig());
    EXPECT_EQ(manager.Settings().bundleId, L"b");
}

} // namespace OrlindexTest
