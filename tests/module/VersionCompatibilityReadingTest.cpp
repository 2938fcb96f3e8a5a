// The version compatibility file: how it is read, and which messages its defects cause.

#include "VersionCompatibilityFileTest.h"
#include "base/Files.h"

namespace OrlindexTest {

namespace fs = std::filesystem;
using testing::ElementsAre;

TEST_F(VersionCompatibilityFile, MalformedIsRefused)
{
    ExpectNone(R"({"ssoClientPlugin": [)", {Unreadable()});
}

TEST_F(VersionCompatibilityFile, EmptyIsRefused)
{
    ExpectNone("", {Unreadable()});
}

TEST_F(VersionCompatibilityFile, BinaryIsRefused)
{
    ExpectNone(std::string("MZ\x90\0\x03\0\0\0", 8) + std::string(70000, '\xFF'), {Unreadable()});
}

TEST_F(VersionCompatibilityFile, NestedTooDeepIsRefused)
{
    ExpectNone(R"({"ssoClientPlugin": )" + std::string(100000, '[') + std::string(100000, ']') + '}', {Unreadable()});
}

TEST_F(VersionCompatibilityFile, TooLargeIsRefused)
{
    using Kestrany::IdentityServices::LargestConfigFile;
    ExpectNone("{}" + std::string(LargestConfigFile - 1, ' '), {Unreadable()});
}

TEST_F(VersionCompatibilityFile, ADirectoryInItsPlaceIsFoundAndRefused)
{
    FindServerApplication();
    const fs::path file = installation.CompatibilityFile();
    fs::create_directory(file);
    EXPECT_FALSE(manager.FindCompatibleClientPlugin());
    EXPECT_THAT(log.Take(), ElementsAre(Searching(Lines({installation.ServerFolder()})), Located(file),
                                        SearchingPlugin(file), Unreadable(), NoPlugin(file)));
}

TEST_F(VersionCompatibilityFile, WithoutKeyTheListIsEmpty)
{
    ExpectNone(R"({"other": []})", {ListEmpty()});
}

TEST_F(VersionCompatibilityFile, AnEmptyArrayIsAnEmptyList)
{
    ExpectNone(R"({"ssoClientPlugin": [null, null]})", {ListEmpty()});
}

TEST_F(VersionCompatibilityFile, AnArrayAtTheTopIsAnEmptyList)
{
    ExpectNone(R"([{"module": "M"}])", {ListEmpty()});
}

TEST_F(VersionCompatibilityFile, ATextInPlaceOfTheArrayIsAnEmptyList)
{
    ExpectNone(R"({"ssoClientPlugin": "M"})", {ListEmpty()});
}

TEST_F(VersionCompatibilityFile, EachDefectOfAnElementIsNamed)
{
    ExpectNone(R"({"ssoClientPlugin": [
                   {"modulePath": "m.dll", "version": "2", "compatibleSsoServicesVersion": {"minVersion": "1"}},
                   {"module": "M", "version": "2", "compatibleSsoServicesVersion": {"minVersion": "1"}},
                   {"module": "M", "modulePath": "m.dll", "compatibleSsoServicesVersion": {"minVersion": "1"}},
                   {"module": "M", "modulePath": "m.dll", "version": "2"},
                   {"module": "M", "modulePath": "m.dll", "version": "2", "compatibleSsoServicesVersion": {}}]})",
               {Blank("'module'"), Blank("'modulePath' or 'modulePathWoW64'"), Blank("'version'"), RangeMissing(),
                RangeInvalid(), ListEmpty()});
}

TEST_F(VersionCompatibilityFile, AWrongTypeIsNamedByItsKey)
{
    ExpectNone(R"({"ssoClientPlugin": [
                   {"module": ["M"]},
                   {"module": "M", "modulePath": {}},
                   {"module": "M", "modulePath": "m.dll", "version": [2]},
                   {"module": "M", "modulePath": "m.dll", "version": "2", "compatibleSsoServicesVersion": "1.11"},
                   {"module": "M", "modulePath": "m.dll", "version": "2",
                    "compatibleSsoServicesVersion": {"versions": "1.11"}}]})",
               {Blank("'module'"), Blank("'modulePath' or 'modulePathWoW64'"), Blank("'version'"), RangeInvalid(),
                RangeInvalid(), ListEmpty()});
}

TEST_F(VersionCompatibilityFile, ANumberTooLargeCostsItsElementAlone)
{
    FindServerApplication();
    installation.WriteCompatibilityFile(R"({"timeout": 1e999, "ssoClientPlugin": [
        {"module": "M", "modulePath": "C:\\m.dll", "version": 1e999, "compatibleSsoServicesVersion": {"minVersion": "1"}},
        {"module": "M", "modulePath": "C:\\m.dll", "version": "9", "compatibleSsoServicesVersion": {"minVersion": )" +
                                        std::string(2000, '1') + R"(}},
        {"module": "M", "modulePath": "C:\\sound.dll", "version": "2",
         "compatibleSsoServicesVersion": {"minVersion": "1"}}]})");
    EXPECT_TRUE(manager.FindCompatibleClientPlugin());
    EXPECT_EQ(Module(), "C:\\sound.dll");
    const auto lines = log.Take();
    EXPECT_THAT(std::vector<LogLine>(lines.begin() + 3, lines.end()),
                ElementsAre(Blank("'version'"), RangeInvalid(), FoundPlugin("C:\\sound.dll")));
}

TEST_F(VersionCompatibilityFile, AnElementWithoutCompatibleVersionsIsIgnoredBesideSoundOnes)
{
    EXPECT_EQ(
        Chosen({Entry("C:\\empty.dll", "9", "{}"), Entry("C:\\missing.dll", "9", "null"), Entry("C:\\sound.dll")}),
        "C:\\sound.dll");
    const auto lines = log.Take();
    EXPECT_THAT(std::vector<LogLine>(lines.begin() + 3, lines.end()),
                ElementsAre(RangeInvalid(), RangeMissing(), FoundPlugin("C:\\sound.dll")));
}

TEST_F(VersionCompatibilityFile, AByteOrderMarkAndCommentsAreAccepted)
{
    FindServerApplication();
    installation.WriteCompatibilityFile({Entry("C:\\client.dll")});
    installation.WriteCompatibilityFile("\xEF\xBB\xBF// builds\r\n" + ReadFile(installation.CompatibilityFile()));
    EXPECT_TRUE(manager.FindCompatibleClientPlugin());
    EXPECT_EQ(Module(), "C:\\client.dll");
}

} // namespace OrlindexTest
