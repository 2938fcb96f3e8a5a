// The version compatibility file: which plugin module it offers.

#include "Imports.h"
#include "VersionCompatibilityFileTest.h"

namespace OrlindexTest {

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
              Utf8(installation.ServerFolder() / "64" / "Client.dll"));
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
