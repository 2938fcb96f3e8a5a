// The version compatibility file: where it is found, how it is read, which plugin module it offers.

#include "Imports.h"
#include "LocateTest.h"
#include "base/FileContents.h"

namespace OrlindexTest {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

constexpr char fileName[] = "TALIXVersionCompatibility.config";
constexpr char serving[] = R"({"minVersion": "1.11", "maxVersion": "1.11"})";

} // namespace

class VersionCompatibilityFile : public LocateTest
{
protected:
    static LogLine Searching(const std::string& lines)
    {
        return InfoLine(std::string("Searching for version compatibility file ") + fileName +
                        " in the following paths:\n" + lines);
    }

    static LogLine NotLocated(const std::string& lines)
    {
        return ErrorLine(std::string("Failed to find version compatibility file ") + fileName +
                         " in the following paths:\n" + lines);
    }

    static LogLine Located(const fs::path& file)
    {
        return InfoLine("Found version compatibility file at " + Utf8(file));
    }

    static LogLine SearchingPlugin(const fs::path& file)
    {
        return InfoLine("Searching for compatible client plugin version for Orlindex version 1.11.13.3 in version "
                        "compatibility file " +
                        Utf8(file));
    }

    static LogLine FoundPlugin(const fs::path& module)
    {
        return InfoLine(
            "Found compatible client plugin for Orlindex version 1.11.13.3 in version compatibility file: " +
            Utf8(module));
    }

    static LogLine NoPlugin(const fs::path& file)
    {
        return ErrorLine("Failed to find compatible client plugin version for Orlindex version 1.11.13.3 in version "
                         "compatibility file " +
                         Utf8(file));
    }

    static LogLine NoPluginWithoutFile(const fs::path& file)
    {
        return ErrorLine("Failed to find compatible client plugin version for Orlindex version 1.11.13.3 since version "
                         "compatibility file " +
                         Utf8(file) + " is not found");
    }

    static LogLine FileMissing(const fs::path& file)
    {
        return ErrorLine("Version compatibility file " + Utf8(file) + " not found");
    }

    LogLine ListEmpty() const
    {
        return ErrorLine(
            "Version compatibility list is empty under key ssoClientPlugin in version compatibility file " +
            Utf8(site.CompatibilityFile()));
    }

    LogLine Blank(const std::string& keys) const
    {
        return ErrorLine("Blank or missing key " + keys + " in ssoClientPlugin in version compatibility file " +
                         Utf8(site.CompatibilityFile()) + ". Object ignored.");
    }

    LogLine RangeMissing() const
    {
        return ErrorLine("Missing object 'compatibleSsoServicesVersion' in version compatibility file " +
                         Utf8(site.CompatibilityFile()) + ". Object ignored.");
    }

    LogLine RangeInvalid() const
    {
        return ErrorLine(
            "Invalid version range in 'compatibleSsoServicesVersion' object in version compatibility file " +
            Utf8(site.CompatibilityFile()) + ". Object ignored.");
    }

    static CompatibilityEntry Entry(const std::string& path, const std::string& version = "2.0",
                                    const std::string& range = serving)
    {
        CompatibilityEntry entry;
        entry.modulePath = path;
        entry.version = version;
        entry.range = range;
        return entry;
    }

    static CompatibilityEntry Wow64Entry(const std::string& path)
    {
        CompatibilityEntry entry = Entry(path);
        entry.pathKey = "modulePathWoW64";
        return entry;
    }

    std::string Module() const { return ToUtf8(manager.ClientPluginModulePath()); }
    std::string File() const { return ToUtf8(manager.VersionCompatibilityFilePath()); }

    /// The module path that a file of those entries gives.
    std::string Chosen(const std::vector<CompatibilityEntry>& entries)
    {
        FindServerApplication();
        site.WriteCompatibilityFile(entries);
        const bool any = manager.FindCompatibleClientPlugin();
        EXPECT_EQ(any, !Module().empty());
        return Module();
    }

    /// A file of that content gives no module, for the reasons that are logged.
    void ExpectNone(const std::string& json, const std::vector<LogLine>& reasons)
    {
        FindServerApplication();
        site.WriteCompatibilityFile(json);
        const fs::path file = site.CompatibilityFile();
        EXPECT_FALSE(manager.FindCompatibleClientPlugin());
        EXPECT_EQ(Module(), "");
        std::vector<LogLine> expected = {Searching(Lines({site.ServerFolder()})), Located(file), SearchingPlugin(file)};
        expected.insert(expected.end(), reasons.begin(), reasons.end());
        expected.push_back(NoPlugin(file));
        EXPECT_THAT(log.Take(), ElementsAreArray(expected));
    }

    LogLine Unreadable() const
    {
        return ErrorLine("Failed to load file " + Utf8(site.CompatibilityFile()) +
                         ". Possibly json format is not valid.");
    }
};

// Locating

TEST_F(VersionCompatibilityFile, IsFoundBesideTheServerApplication)
{
    FindServerApplication();
    site.WriteCompatibilityFile({Entry("%SSOServerAppPath%\\Client.dll")});
    EXPECT_TRUE(manager.FindCompatibleClientPlugin());
    const fs::path file = site.CompatibilityFile();
    const fs::path module = site.ServerFolder() / "Client.dll";
    EXPECT_EQ(File(), Utf8(file));
    EXPECT_EQ(Module(), Utf8(module));
    EXPECT_THAT(log.Take(), ElementsAre(Searching(Lines({site.ServerFolder()})), Located(file), SearchingPlugin(file),
                                        FoundPlugin(module)));
}

TEST_F(VersionCompatibilityFile, APathThatIsKnownEndsTheMatter)
{
    EXPECT_NE(Chosen({Entry("C:\\first.dll")}), "");
    log.Take();
    site.WriteCompatibilityFile({Entry("C:\\second.dll")});
    EXPECT_TRUE(manager.FindCompatibleClientPlugin());
    EXPECT_EQ(Module(), "C:\\first.dll");
    EXPECT_THAT(log.Take(), IsEmpty());
}

TEST_F(VersionCompatibilityFile, IsLocatedOnceAndReadAfreshEachTime)
{
    FindServerApplication();
    site.WriteCompatibilityFile("{}");
    EXPECT_FALSE(manager.FindCompatibleClientPlugin());
    log.Take();
    site.WriteCompatibilityFile({Entry("C:\\second.dll")});
    EXPECT_TRUE(manager.FindCompatibleClientPlugin());
    EXPECT_THAT(log.Take(), ElementsAre(SearchingPlugin(site.CompatibilityFile()), FoundPlugin("C:\\second.dll")));
}

TEST_F(VersionCompatibilityFile, IsSearchedInTheConfiguredDirectoryNext)
{
    const fs::path folder = site.MakeFolder(fs::path("host") / "compatibility");
    WriteFile(folder / fileName, R"({"ssoClientPlugin": []})");
    site.InstallServerApplication(site.HostFolder());
    site.WriteClientConfig(ServerMember("VersionCompatibilityConfigfilePath", R"("%ExePath%\\compatibility")"));
    ASSERT_TRUE(manager.FindSSOServerApp());
    log.Take();
    EXPECT_FALSE(manager.FindCompatibleClientPlugin());
    EXPECT_EQ(File(), Utf8(folder / fileName));
    const auto lines = log.Take();
    EXPECT_THAT(std::vector<LogLine>(lines.begin(), lines.begin() + 4),
                ElementsAre(Searching(Lines({site.HostFolder()})), Searching(Lines({folder})),
                            Located(folder / fileName), SearchingPlugin(folder / fileName)));
}

TEST_F(VersionCompatibilityFile, TheServerApplicationsDirectoryWinsOverTheConfigured)
{
    const fs::path folder = site.MakeFolder(fs::path("host") / "compatibility");
    WriteFile(folder / fileName, "{}");
    WriteFile(site.HostFolder() / fileName, "{}");
    site.InstallServerApplication(site.HostFolder());
    site.WriteClientConfig(ServerMember("VersionCompatibilityConfigfilePath", '"' + JsonPath(folder) + '"'));
    manager.FindCompatibleClientPlugin();
    EXPECT_EQ(File(), Utf8(site.HostFolder() / fileName));
}

TEST_F(VersionCompatibilityFile, NotFoundInEitherDirectory)
{
    const fs::path folder = site.MakeFolder("compatibility");
    site.InstallServerApplication(site.HostFolder());
    site.WriteClientConfig(ServerMember("VersionCompatibilityConfigfilePath", '"' + JsonPath(folder) + '"'));
    ASSERT_TRUE(manager.FindSSOServerApp());
    log.Take();
    EXPECT_FALSE(manager.FindCompatibleClientPlugin());
    EXPECT_EQ(File(), fileName);
    EXPECT_THAT(log.Take(), ElementsAre(Searching(Lines({site.HostFolder()})), Searching(Lines({folder})),
                                        NotLocated(Lines({folder})), SearchingPlugin(fileName), FileMissing(fileName),
                                        NoPluginWithoutFile(fileName)));
}

TEST_F(VersionCompatibilityFile, WithoutConfiguredDirectoryTheSecondSearchHasNone)
{
    FindServerApplication();
    WriteFile(fileName, "planted"); // The current directory is none of the directories.
    EXPECT_FALSE(manager.FindCompatibleClientPlugin());
    const auto lines = log.Take();
    EXPECT_THAT(std::vector<LogLine>(lines.begin(), lines.begin() + 3),
                ElementsAre(Searching(Lines({site.ServerFolder()})), Searching(""), NotLocated("")));
}

TEST_F(VersionCompatibilityFile, AFileInTheCurrentDirectoryIsNeverRead)
{
    FindServerApplication();
    WriteFile(fileName, R"({"ssoClientPlugin": [{"module": "planted", "modulePath": "C:\\planted.dll",
        "version": "9", "compatibleSsoServicesVersion": {"minVersion": "1"}}]})");
    EXPECT_FALSE(manager.FindCompatibleClientPlugin());
    const auto lines = log.Take();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_THAT(std::vector<LogLine>(lines.end() - 2, lines.end()),
                ElementsAre(FileMissing(fileName), NoPluginWithoutFile(fileName)));
}

TEST_F(VersionCompatibilityFile, WithoutServerApplicationTheReferenceStaysInTheMessage)
{
    ASSERT_FALSE(manager.FindSSOServerApp());
    EXPECT_FALSE(manager.FindCompatibleClientPlugin());
    EXPECT_THAT(log.Take(), testing::Contains(Searching("%SSOServerAppPath%")));
    EXPECT_EQ(File(), fileName);
}

TEST_F(VersionCompatibilityFile, AFolderNamedLikeAReferenceWithoutValueIsNeverSearched)
{
    ASSERT_FALSE(manager.FindSSOServerApp());
    fs::create_directory("%SSOServerAppPath%");
    WriteFile(fs::path("%SSOServerAppPath%") / fileName, "planted");
    EXPECT_FALSE(manager.FindCompatibleClientPlugin());
    EXPECT_EQ(File(), fileName);
}

TEST_F(VersionCompatibilityFile, AnOverrideMayBeABareName)
{
    FindServerApplication();
    site.WriteCompatibilityFile({Entry("C:\\default.dll")});
    fs::copy_file(site.CompatibilityFile(), "other.json");
    manager.SetVersionCompatibilityFileOverride(L"other.json");
    EXPECT_TRUE(manager.FindCompatibleClientPlugin());
}

TEST_F(VersionCompatibilityFile, AMissingFileIsNamedOnceAndThenByTheCaller)
{
    FindServerApplication();
    site.WriteCompatibilityFile("{}");
    EXPECT_FALSE(manager.FindCompatibleClientPlugin());
    log.Take();
    const fs::path file = site.CompatibilityFile();
    fs::remove(file);
    EXPECT_FALSE(manager.FindCompatibleClientPlugin());
    EXPECT_THAT(log.Take(), ElementsAre(SearchingPlugin(file), FileMissing(file), NoPluginWithoutFile(file)));
}

TEST_F(VersionCompatibilityFile, AnOverrideIsUsedWithoutSearch)
{
    FindServerApplication();
    site.WriteCompatibilityFile({Entry("C:\\default.dll")});
    const fs::path file = site.MakeFolder("elsewhere") / "other.json";
    fs::copy_file(site.CompatibilityFile(), file);
    manager.SetVersionCompatibilityFileOverride(file.native());
    EXPECT_TRUE(manager.FindCompatibleClientPlugin());
    EXPECT_EQ(File(), Utf8(file));
    EXPECT_THAT(log.Take(), ElementsAre(InfoLine("Found version compatibility file override at " + Utf8(file)),
                                        SearchingPlugin(file), FoundPlugin("C:\\default.dll")));
}

TEST_F(VersionCompatibilityFile, AnOverrideThatDoesNotExistEndsTheSearch)
{
    FindServerApplication();
    site.WriteCompatibilityFile({Entry("C:\\default.dll")});
    const fs::path file = site.HostFolder() / "missing.json";
    manager.SetVersionCompatibilityFileOverride(file.native());
    EXPECT_FALSE(manager.FindCompatibleClientPlugin());
    EXPECT_EQ(Module(), "");
    EXPECT_EQ(File(), "");
    EXPECT_THAT(log.Take(), ElementsAre(ErrorLine("Failed to find version compatibility file override " + Utf8(file)),
                                        SearchingPlugin(""), FileMissing(""), NoPluginWithoutFile("")));
}

// Reading

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
    using Kestrany::IdentityServices::LargestFile;
    ExpectNone("{}" + std::string(LargestFile - 1, ' '), {Unreadable()});
}

TEST_F(VersionCompatibilityFile, ADirectoryInItsPlaceIsFoundAndRefused)
{
    FindServerApplication();
    const fs::path file = site.CompatibilityFile();
    fs::create_directory(file);
    EXPECT_FALSE(manager.FindCompatibleClientPlugin());
    EXPECT_THAT(log.Take(), ElementsAre(Searching(Lines({site.ServerFolder()})), Located(file), SearchingPlugin(file),
                                        Unreadable(), NoPlugin(file)));
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
    site.WriteCompatibilityFile({Entry("C:\\client.dll")});
    site.WriteCompatibilityFile("\xEF\xBB\xBF// builds\r\n" + ReadFile(site.CompatibilityFile()));
    EXPECT_TRUE(manager.FindCompatibleClientPlugin());
    EXPECT_EQ(Module(), "C:\\client.dll");
}

// Choosing

TEST_F(VersionCompatibilityFile, TheHigherVersionWinsWhateverItsPlaceInTheFile)
{
    EXPECT_EQ(Chosen({Entry("C:\\9.dll", "1.9"), Entry("C:\\10.dll", "1.10"), Entry("C:\\2.dll", "1.2")}),
              "C:\\10.dll");
}

TEST_F(VersionCompatibilityFile, OfEqualVersionsTheEarlierWins)
{
    EXPECT_EQ(Chosen({Entry("C:\\first.dll", "2.0"), Entry("C:\\second.dll", "2.0")}), "C:\\first.dll");
}

TEST_F(VersionCompatibilityFile, AHigherVersionThatDoesNotServeIsPassedOver)
{
    EXPECT_EQ(Chosen({Entry("C:\\3.dll", "3", R"({"minVersion": "1.12"})"), Entry("C:\\1.dll", "1")}), "C:\\1.dll");
}

TEST_F(VersionCompatibilityFile, NoElementThatServes)
{
    ExpectNone(R"({"ssoClientPlugin": [{"module": "M", "modulePath": "m.dll", "version": "2",
                                        "compatibleSsoServicesVersion": {"maxVersion": "1.11.13.2"}}]})",
               {});
}

TEST_F(VersionCompatibilityFile, TheModulePathIsExpandedAndNormalised)
{
    EXPECT_EQ(Chosen({Entry("%SSOServerAppPath%/./plugins\\..//64/Client.dll")}),
              Utf8(site.ServerFolder() / "64" / "Client.dll"));
}

TEST_F(VersionCompatibilityFile, TheModulePathMayReferToEveryVariable)
{
    EXPECT_EQ(Chosen({Entry("%ssoservicesmodulepath%\\Client.dll")}), Utf8(library / "Client.dll"));
}

TEST_F(VersionCompatibilityFile, AReferenceWithoutValueStaysInTheModulePath)
{
    EXPECT_EQ(Chosen({Entry("%Unknown%\\Client.dll")}), "%Unknown%\\Client.dll");
}

TEST_F(VersionCompatibilityFile, AModulePathInAnyScriptSurvives)
{
    EXPECT_EQ(Chosen({Entry("C:\\\xE4\xB8\xAD\\Client.dll")}), "C:\\\xE4\xB8\xAD\\Client.dll");
}

TEST_F(VersionCompatibilityFile, A64BitProcessIgnoresAnElementWithOnlyTheWow64Path)
{
    EXPECT_EQ(Chosen({Wow64Entry("C:\\32.dll")}), "");
    EXPECT_THAT(log.Take(), testing::Contains(Blank("'modulePath' or 'modulePathWoW64'")));
}

TEST_F(VersionCompatibilityFile, AWow64ProcessIgnoresAnElementWithOnlyTheOtherPath)
{
    const Wow64Process wow64;
    EXPECT_EQ(Chosen({Entry("C:\\64.dll")}), "");
    EXPECT_THAT(log.Take(), testing::Contains(Blank("'modulePath' or 'modulePathWoW64'")));
}

TEST_F(VersionCompatibilityFile, AWow64ProcessTakesItsOwnPath)
{
    const Wow64Process wow64;
    EXPECT_EQ(Chosen({Entry("C:\\64.dll"), Wow64Entry("C:\\32.dll")}), "C:\\32.dll");
}

TEST_F(VersionCompatibilityFile, AFailedWow64QueryCountsAsNo)
{
    const FailingWow64Query query;
    EXPECT_EQ(Chosen({Wow64Entry("C:\\32.dll"), Entry("C:\\64.dll")}), "C:\\64.dll");
}

struct RangeCase
{
    const char* name;
    const char* range;
    bool serves;
};

void PrintTo(const RangeCase& range, std::ostream* stream)
{
    *stream << range.range;
}

class VersionCompatibilityFileRange : public VersionCompatibilityFile, public testing::WithParamInterface<RangeCase>
{
};

TEST_P(VersionCompatibilityFileRange, Serves1_11_13_3)
{
    EXPECT_EQ(Chosen({Entry("C:\\client.dll", "2", GetParam().range)}), GetParam().serves ? "C:\\client.dll" : "");
}

INSTANTIATE_TEST_SUITE_P(
    , VersionCompatibilityFileRange,
    testing::Values(RangeCase{"Max1_11", R"({"minVersion": "1.10", "maxVersion": "1.11"})", true},
                    RangeCase{"Max1_10_99", R"({"minVersion": "1.10", "maxVersion": "1.10.99"})", false},
                    RangeCase{"Max1_11_13_2", R"({"minVersion": "1.10", "maxVersion": "1.11.13.2"})", false},
                    RangeCase{"Max1_11_13_3_0", R"({"minVersion": "1.10", "maxVersion": "1.11.13.3.0"})", true},
                    RangeCase{"Versions1_11", R"({"versions": ["1.11"]})", true},
                    RangeCase{"Versions1_11_13_4", R"({"versions": ["1.11.13.4"]})", false}),
    [](const testing::TestParamInfo<RangeCase>& instance) { return std::string(instance.param.name); });

} // namespace OrlindexTest
