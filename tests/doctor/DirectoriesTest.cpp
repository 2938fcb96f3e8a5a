// Search directories from a hostile or a careless client config file.

#include "DoctorTest.h"

namespace OrlindexTest {

using testing::EndsWith;
using testing::HasSubstr;
using testing::SizeIs;

class DoctorDirectories : public DoctorTest
{
protected:
    static constexpr std::size_t Shown = 100;
    static constexpr std::size_t Bound = 200000; ///< Bytes of a report, however many directories there are.

    void WriteSearchPaths(const std::string& json) const
    {
        installation.WriteClientConfig(R"({"ssoServer": {"searchPaths": ")" + json + R"("}})");
    }

    static std::string Repeated(const std::string& text, std::size_t count)
    {
        std::string repeated;
        for (std::size_t index = 0; index < count; ++index)
            repeated += text;
        return repeated;
    }
};

TEST_F(DoctorDirectories, OfManyTheFirstHundredAreShownAndACount)
{
    installation.Install();
    WriteSearchPaths(Repeated("x;", 20000) + "x");
    const DoctorReport report = Report();
    EXPECT_EQ(report.Run().exitCode, 13U);
    ASSERT_LT(report.Run().output.size(), Bound);
    EXPECT_THAT(report.Results("server-application"), SizeIs(Shown + 2))
        << "the count, and the file that was not found";
    const Json::Value further = report.Find("server-application", "further directories");
    EXPECT_EQ(further["result"], "not-shown");
    EXPECT_EQ(further["total"], 20003) << "with the library's folder and the host's";
    EXPECT_EQ(further["value"], "19903");

    const ProgramRun text = RunTool();
    ASSERT_LT(text.output.size(), Bound);
    EXPECT_THAT(text.output, HasSubstr("further directories       19903: more, of 20003 in all"));
}

TEST_F(DoctorDirectories, AMegabyteOfSeparatorsMakesNoLongReport)
{
    installation.Install();
    WriteSearchPaths(std::string(1 << 20, ';'));
    const DoctorReport report = Report();
    EXPECT_TRUE(report.Run().inTime);
    EXPECT_EQ(report.Run().exitCode, 13U);
    EXPECT_LT(report.Run().output.size(), Bound);
    EXPECT_LT(RunTool().output.size(), Bound);
}

TEST_F(DoctorDirectories, TheOneThatHoldsTheFileIsShownWhereverItStands)
{
    installation.Install();
    WriteSearchPaths(Repeated("x;", 300) + JsonPath(installation.ServerFolder()));
    const DoctorReport report = Report();
    EXPECT_EQ(report.Run().exitCode, 0U) << report.Run().output;
    EXPECT_THAT(report.Results("server-application"), testing::Contains("client config file: found"));
    EXPECT_EQ(report.Find("server-application", "further directories")["total"], 303);
    EXPECT_EQ(report.Find("server-application", "further directories")["value"], "202");
}

TEST_F(DoctorDirectories, AHundredAreShownWithoutACount)
{
    installation.Install();
    WriteSearchPaths(Repeated("x;", Shown - 3) + "x");
    const DoctorReport report = Report();
    EXPECT_THAT(report.Results("server-application"), SizeIs(Shown + 1));
    EXPECT_TRUE(report.Find("server-application", "further directories").isNull());
}

TEST_F(DoctorDirectories, ATextOfAMegabyteIsCut)
{
    installation.Install();
    WriteSearchPaths(JsonPath(installation.ServerFolder()) + ";" + std::string(1 << 20, 'x'));
    const DoctorReport report = Report();
    EXPECT_EQ(report.Run().exitCode, 0U) << report.Cause();
    EXPECT_LT(report.Run().output.size(), Bound);
    EXPECT_THAT(report.Find("client-config", "searchPaths")["value"].asString(), EndsWith(" more bytes"));
    EXPECT_LT(RunTool().output.size(), Bound);
}

TEST_F(DoctorDirectories, AZeroInsideIsShown)
{
    installation.Install();
    WriteSearchPaths(JsonPath(installation.ServerFolder()) + R"(\u0000nothing)");
    const std::string directory = Utf8(installation.ServerFolder());
    EXPECT_THAT(RunTool().output, HasSubstr(directory + "\\u0000nothing"));
    const DoctorReport report = Report();
    EXPECT_EQ(report.Find("client-config", "searchPaths")["value"].asString(), directory + std::string("\0nothing", 8));
    EXPECT_THAT(report.Run().output, HasSubstr("server\\u0000nothing"));
}

} // namespace OrlindexTest
