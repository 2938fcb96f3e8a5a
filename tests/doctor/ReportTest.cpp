// Reports of every kind, written for the test that holds them against the published schema.

#include "DoctorTest.h"

namespace OrlindexTest {

class DoctorReports : public DoctorTest
{
protected:
    void Write(const std::string& name, const DoctorReport& report) const
    {
        WriteFile(BuildFolder() / "tests" / "doctor" / "reports" / (name + ".json"), report.Run().output);
    }
};

TEST_F(DoctorReports, OfEachKindAreWritten)
{
    Write("fails", Report());
    site.Install();
    Write("starts", Report({L"--load"}));
    Write("check", Report({L"check", site.PluginFile().native()}));
    site.Install("stranger");
    site.WriteCompatibilityFile({CompatibilityEntry{"%SSOServerAppPath%\\PellwickClient.dll"},
                                 CompatibilityEntry{"x", "9", R"({"minVersion": "2"})"}, CompatibilityEntry{"", "1"}});
    Write("signature", Report());
    std::string paths;
    for (int index = 0; index < 200; ++index)
        paths += "x;";
    site.WriteClientConfig(R"({"ssoServer": {"searchPaths": ")" + paths + R"("}})");
    Write("directories", Report());
}

} // namespace OrlindexTest
