// Writes reports of every kind for the test that validates them with the published schema.

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
    installation.Install();
    Write("starts", Report({L"--load"}));
    Write("check", Report({L"check", installation.PluginFile().native()}));
    installation.Install("stranger");
    installation.WriteCompatibilityFile({CompatibilityEntry{"%SSOServerAppPath%\\PellwickClient.dll"},
                                         CompatibilityEntry{"x", "9", R"({"minVersion": "2"})"},
                                         CompatibilityEntry{"", "1"}});
    Write("signature", Report());
    std::string paths;
    for (int index = 0; index < 200; ++index)
        paths += "x;";
    installation.WriteClientConfig(R"({"ssoServer": {"searchPaths": ")" + paths + R"("}})");
    Write("directories", Report());
}

} // namespace OrlindexTest
