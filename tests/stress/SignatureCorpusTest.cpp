// Corrupted and unusually signed modules: the library's verdict follows the platform's verify result, and no code of a
// refused module runs.

#include "CorruptedModules.h"
#include "ExpectedVerdict.h"
#include "TestScale.h"
#include "support/Child.h"
#include "support/HostTest.h"
#include "support/Platform.h"
#include "support/UserRoots.h"

namespace OrlindexTest {

using testing::HasSubstr;
using testing::Not;

class SignatureCorpus : public HostTest
{
protected:
    /// The parent part: tries a module in a process of its own.
    void Examine(const CorruptedModule& module)
    {
        WriteFile(installation.PluginFile(), module.bytes);
        const ChildOutcome outcome = RunChild(module.name);
        if (outcome.report == Asking)
        {
            // The platform crashed on the file while the test verified it, before the library did. Report() limits
            // these.
            ++crashed_;
            return;
        }
        EXPECT_TRUE(outcome.passed) << module.name << ", exit code " << outcome.code << '\n' << outcome.output;
        ++(outcome.report == Valid ? accepted_ : refused_);
    }

    void Examine(const std::vector<CorruptedModule>& modules)
    {
        for (const CorruptedModule& module : modules)
            Examine(module);
    }

    void ExamineBuild(const std::string& plugin)
    {
        installation.CopyPlugin(plugin, installation.PluginFile());
        Examine({plugin, ReadFile(installation.PluginFile())});
    }

    std::string GoodModule() const
    {
        installation.CopyPlugin("marked", installation.PluginFile());
        return ReadFile(installation.PluginFile());
    }

    /// The child part.
    void CompareVerdicts()
    {
        ReportToParent(Asking);
        const ExpectedVerdict expected = VerdictOf(installation.PluginFile(), installation.RootCertificate("root"));
        ReportToParent(expected.valid ? Valid : "refused");
        ASSERT_FALSE(PluginRan());
        CapturedOutput capture;
        const int result = IdServicesMgr::Initialize();
        const std::string output = capture.Take();
        if (expected.valid)
        {
            // The system's loader may still refuse a signed file; then there is a message.
            EXPECT_THAT(output, Not(HasSubstr("Binary file: ")));
            EXPECT_EQ(result == IdSuccess, output.find("Failed to load client plugin module") == std::string::npos);
            EXPECT_EQ(result == IdSuccess, PluginRan()) << "the marks are left";
        }
        else
        {
            EXPECT_THAT(output, HasSubstr(expected.reason + Utf8(installation.PluginFile()) + '\n'))
                << "the platform's result is " << std::hex << expected.platformResult;
            EXPECT_EQ(result, IdClientUnavailable);
            EXPECT_FALSE(PluginRan());
            EXPECT_FALSE(IsLoaded(installation.PluginFile()));
        }
    }

    void Report(const std::string& name)
    {
        EXPECT_LE(crashed_, MostCrashesOfVerification())
            << "processes ended in the platform's verification, not in the library";
        PrintCount("modules examined, " + name, accepted_ + refused_);
        PrintCount("modules accepted, " + name, accepted_);
        PrintCount("modules that the platform itself crashed on, " + name, crashed_);
    }

    void SetUp() override
    {
        if (!ChildInput())
            installation.InstallWithoutPlugin();
    }

    int Accepted() const { return accepted_; }
    int Refused() const { return refused_; }

private:
    static constexpr char Asking[] = "verifying by the platform";
    static constexpr char Valid[] = "valid";

    static bool PluginRan() { return GetEnvironmentVariableW(L"ORLINDEX_TEST_PLUGIN_ENTERED", nullptr, 0) != 0; }

    int accepted_ = 0;
    int refused_ = 0;
    int crashed_ = 0;
};

class FlippedBytes : public SignatureCorpus, public testing::WithParamInterface<int>
{
};

TEST_P(FlippedBytes, AreAcceptedOrRefusedAsThePlatformDoes)
{
    if (ChildInput())
        return CompareVerdicts();
    Examine(WithFlippedBytes(GoodModule(), ShortOrLong(15, 125), 20200101U + static_cast<unsigned>(GetParam())));
    Report("flipped bytes");
    EXPECT_GT(Refused(), 0);
}

INSTANTIATE_TEST_SUITE_P(Share, FlippedBytes, testing::Range(0, 4));

TEST_F(SignatureCorpus, AModuleThatIsCutOffIsAcceptedOrRefusedAsThePlatformDoes)
{
    if (ChildInput())
        return CompareVerdicts();
    Examine(CutOff(GoodModule()));
    Report("cut off");
    EXPECT_EQ(Accepted(), 0);
    EXPECT_GT(Refused(), 0);
}

TEST_F(SignatureCorpus, AModuleWithAppendedDataIsAcceptedOrRefusedAsThePlatformDoes)
{
    if (ChildInput())
        return CompareVerdicts();
    Examine(WithAppendedData(GoodModule()));
    Report("appended data");
    EXPECT_GT(Refused(), 0);
}

TEST_F(SignatureCorpus, ATableOfCertificatesThatIsWrongIsAcceptedOrRefusedAsThePlatformDoes)
{
    if (ChildInput())
        return CompareVerdicts();
    Examine(WithOtherCertificateTables(GoodModule()));
    Report("certificate tables");
    EXPECT_GT(Refused(), 0);
}

TEST_F(SignatureCorpus, EachSignerIsAcceptedOrRefusedAsThePlatformDoes)
{
    if (ChildInput())
        return CompareVerdicts();
    const int before = Accepted();
    ExamineBuild("marked");
    EXPECT_EQ(Accepted(), before + 1) << "the good one";
    for (const char* plugin :
         {"marked-stranger", "marked-look-alike", "marked-pinned-expired", "marked-expired", "marked-wrong-purpose",
          "marked-self-signed", "marked-other-root", "marked-twice", "marked-stranger-first", "marked-unsigned"})
        ExamineBuild(plugin);
    Report("signers");
    EXPECT_GT(Refused(), 0);
}

/// With a root that the user trusts, the platform refuses a signer for other reasons than the root.
class MachineSignatureCorpus : public SignatureCorpus
{
protected:
    void TearDown() override
    {
        if (!ChildInput())
            for (const char* root : Roots)
                UserRoots().Remove(installation.RootCertificate(root));
    }

    static constexpr const char* Roots[] = {"trusted-root", "self-signed"};
};

TEST_F(MachineSignatureCorpus, EachSignerBelowATrustedRootIsAcceptedOrRefusedAsThePlatformDoes)
{
    if (ChildInput())
        return CompareVerdicts();
    for (const char* root : Roots)
        UserRoots().Add(installation.RootCertificate(root));
    for (const char* plugin : {"marked-trusted", "marked-expired", "marked-wrong-purpose", "marked-self-signed"})
        ExamineBuild(plugin);
    Report("signers below a trusted root");
    EXPECT_GT(Accepted(), 0);
}

} // namespace OrlindexTest
