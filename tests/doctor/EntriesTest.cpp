// Version compatibility files from an attacker, or from a faulty program.

#include "DoctorTest.h"

namespace OrlindexTest {

using testing::HasSubstr;
using testing::SizeIs;

class DoctorEntries : public DoctorTest
{
protected:
    static constexpr std::size_t Many = 100000;
    static constexpr std::size_t Bound = 100000; ///< Bytes of a report, however many entries there are.

    void WriteElements(const std::string& element, std::size_t count, const std::string& last) const
    {
        std::string json = R"({"ssoClientPlugin": [)";
        for (std::size_t index = 0; index < count; ++index)
            json += element + ',';
        installation.WriteCompatibilityFile(json + last + "]}");
    }

    static std::string Element(const std::string& path, const std::string& version, const std::string& range)
    {
        return R"({"module": "M", "modulePath": ")" + path + R"(", "version": ")" + version +
               R"(", "compatibleSsoServicesVersion": )" + range + '}';
    }

    const std::string thisModule = "%SSOServerAppPath%\\\\PellwickClient.dll";
    const std::string tooNew = Element("C:\\\\a.dll", "1", R"({"minVersion": "2"})");
};

TEST_F(DoctorEntries, TextsThatAreNoUtf8BecomeSuch)
{
    installation.Install();
    installation.WriteCompatibilityFile(R"({"ssoClientPlugin": [)" +
                                        Element("C:\\\\\xFE.dll", "1.\xFF", "{\"minVersion\": \"2.\xC3\"}") + "]}");
    const DoctorReport report = Report();
    EXPECT_EQ(report.Run().exitCode, 24U);
    const Json::Value entry = report.Find("compatibility-entries", "ssoClientPlugin[0]");
    EXPECT_EQ(entry["value"], "M 1.\xEF\xBF\xBD, C:\\\xEF\xBF\xBD.dll");
    EXPECT_THAT(entry["note"].asString(), HasSubstr("min 2.\xEF\xBF\xBD"));
    EXPECT_THAT(report.Cause(), HasSubstr("serves min 2.\xEF\xBF\xBD."));
    EXPECT_THAT(RunTool().output, HasSubstr("serves min 2.\xEF\xBF\xBD."));
}

TEST_F(DoctorEntries, OfManyThatAreIgnoredTheFirstAreShown)
{
    installation.Install();
    WriteElements("1", Many, "1");
    const DoctorReport report = Report();
    EXPECT_EQ(report.Run().exitCode, 23U);
    EXPECT_LT(report.Run().output.size(), Bound);
    EXPECT_THAT(report.Results("compatibility-entries"), SizeIs(101));
    EXPECT_EQ(report.Find("compatibility-entries", "further entries")["value"], std::to_string(Many + 1 - 100));
    EXPECT_EQ(report.Find("compatibility-entries", "further entries")["total"].asUInt64(), Many + 1);
    EXPECT_EQ(report.MarkOf("compatibility-entries"), "warning");
    EXPECT_THAT(report.Cause(), HasSubstr("ssoClientPlugin[0]"));
    EXPECT_LT(RunTool().output.size(), Bound);
}

TEST_F(DoctorEntries, OfManyThatDoNotServeTheCauseNamesAFew)
{
    installation.Install();
    WriteElements(tooNew, Many / 10, "1");
    const DoctorReport report = Report();
    EXPECT_EQ(report.Run().exitCode, 24U);
    EXPECT_LT(report.Run().output.size(), Bound);
    EXPECT_THAT(report.Cause(), HasSubstr("ssoClientPlugin[9] serves min 2; and so on, for 9990 more."));
}

TEST_F(DoctorEntries, OneThatServesAfterManyThatAreIgnoredIsNotOverlooked)
{
    installation.Install();
    WriteElements("1", 300, tooNew);
    EXPECT_EQ(Report().Run().exitCode, 24U);
    EXPECT_EQ(Report().Find("compatibility-entries", "ssoClientPlugin[300]")["result"], "below-minimum");
}

TEST_F(DoctorEntries, TheChosenOneIsShownWhereverItStands)
{
    installation.Install();
    WriteElements(tooNew, 300, Element(thisModule, "2", R"({"minVersion": "1"})"));
    const DoctorReport report = Report();
    EXPECT_EQ(report.Run().exitCode, 0U) << report.Run().output;
    EXPECT_EQ(report.Find("compatibility-entries", "ssoClientPlugin[300]")["result"], "chosen");
    EXPECT_EQ(report.Find("compatibility-entries", "further entries")["value"], "200");
    EXPECT_EQ(report.MarkOf("compatibility-entries"), "ok");
}

TEST_F(DoctorEntries, ACheckFindsTheModulesEntryWhereverItStands)
{
    installation.Install();
    WriteElements(tooNew, 300, Element(thisModule, "2", R"({"minVersion": "2"})"));
    const DoctorReport report = Report({L"check", installation.PluginFile().native()});
    EXPECT_EQ(report.Run().exitCode, 25U);
    EXPECT_THAT(report.Cause(), HasSubstr("ssoClientPlugin[300] names it, but does not serve"));
    EXPECT_EQ(report.Find("compatibility-entries", "further entries")["value"], "201");
}

TEST_F(DoctorEntries, OfManyVersionsOfOneEntryTheFirstAreShown)
{
    installation.Install();
    std::string versions = R"("9")";
    for (std::size_t index = 1; index < Many; ++index)
        versions += R"(,"9")";
    WriteElements(Element("C:\\\\a.dll", "1", R"({"versions": [)" + versions + "]}"), 1, "1");
    const DoctorReport report = Report();
    EXPECT_EQ(report.Run().exitCode, 24U) << report.Cause();
    EXPECT_LT(report.Run().output.size(), Bound);
    EXPECT_THAT(report.Cause(), HasSubstr("listed 9 and " + std::to_string(Many - 20) + " more"));
}

} // namespace OrlindexTest
