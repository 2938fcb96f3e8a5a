// Spoilt and strangely signed modules: the library's verdict follows the platform's answer, and nothing of a module
// that is refused ever runs.

#include "Child.h"
#include "Effort.h"
#include "ExpectedVerdict.h"
#include "SpoiltModules.h"
#include "support/HostTest.h"
#include "support/UserRoots.h"

namespace OrlindexTest {

using testing::HasSubstr;
using testing::Not;

class SignatureCorpus : public HostTest
{
protected:
    /// The parent part: tries a module in a process of its own.
    void Examine(const SpoiltModule& module)
    {
        WriteFile(site.PluginFile(), module.bytes);
        const ChildOutcome outcome = RunChild(module.name);
        if (outcome.answer == Asking)
        {
            // The platform fell over the file when the test asked it, before the library did. Report() bounds these.
            ++unanswered_;
            return;
        }
        EXPECT_TRUE(outcome.passed) << module.name << ", exit code " << outcome.code << '\n' << outcome.output;
        ++(outcome.answer == Valid ? accepted_ : refused_);
    }

    void Examine(const std::vector<SpoiltModule>& modules)
    {
        for (const SpoiltModule& module : modules)
            Examine(module);
    }

    void ExamineBuild(const std::string& plugin)
    {
        site.CopyPlugin(plugin, site.PluginFile());
        Examine({plugin, ReadFile(site.PluginFile())});
    }

    std::string GoodModule() const
    {
        site.CopyPlugin("marked", site.PluginFile());
        return ReadFile(site.PluginFile());
    }

    /// The child part.
    void Judge()
    {
        AnswerParent(Asking);
        const ExpectedVerdict expected = VerdictOf(site.PluginFile(), site.RootCertificate("root"));
        AnswerParent(expected.valid ? Valid : "refused");
        ASSERT_FALSE(PluginRan());
        CapturedOutput capture;
        const int result = IdServicesMgr::Initialize();
        const std::string output = capture.Take();
        if (expected.valid)
        {
            // The system's loader may still refuse what is signed; then it says so.
            EXPECT_THAT(output, Not(HasSubstr("Binary file: ")));
            EXPECT_EQ(result == IdSuccess, output.find("Failed to load client plugin module") == std::string::npos);
            EXPECT_EQ(result == IdSuccess, PluginRan()) << "the marks are left";
        }
        else
        {
            EXPECT_THAT(output, HasSubstr(expected.reason + Utf8(site.PluginFile()) + '\n'))
                << "the platform answered " << std::hex << expected.answer;
            EXPECT_EQ(result, IdClientUnavailable);
            EXPECT_FALSE(PluginRan());
            EXPECT_FALSE(IsLoaded(site.PluginFile()));
        }
    }

    void Report(const std::string& name)
    {
        EXPECT_LE(unanswered_, MostUnanswered) << "processes ended while they asked the platform, not the library";
        PrintCount("modules examined, " + name, accepted_ + refused_);
        PrintCount("modules accepted, " + name, accepted_);
        PrintCount("modules that the platform itself crashed on, " + name, unanswered_);
    }

    void SetUp() override
    {
        if (!ChildInput())
            site.InstallWithoutPlugin();
    }

    int Accepted() const { return accepted_; }
    int Refused() const { return refused_; }

private:
    /// On Wine a certificate of another kind makes the platform crash; nothing else does.
    static constexpr int MostUnanswered = 1;
    static constexpr char Asking[] = "asking the platform";
    static constexpr char Valid[] = "valid";

    static bool PluginRan() { return GetEnvironmentVariableW(L"ORLINDEX_TEST_PLUGIN_ENTERED", nullptr, 0) != 0; }

    int accepted_ = 0;
    int refused_ = 0;
    int unanswered_ = 0;
};

class FlippedBytes : public SignatureCorpus, public testing::WithParamInterface<int>
{
};

TEST_P(FlippedBytes, AreJudgedAsThePlatformJudgesThem)
{
    if (ChildInput())
        return Judge();
    Examine(WithFlippedBytes(GoodModule(), ShortOrLong(15, 125), 20200101U + static_cast<unsigned>(GetParam())));
    Report("flipped bytes");
    EXPECT_GT(Refused(), 0);
}

INSTANTIATE_TEST_SUITE_P(Share, FlippedBytes, testing::Range(0, 4));

TEST_F(SignatureCorpus, AModuleThatIsCutOffIsJudgedAsThePlatformJudgesIt)
{
    if (ChildInput())
        return Judge();
    Examine(CutOff(GoodModule()));
    Report("cut off");
    EXPECT_EQ(Accepted(), 0);
    EXPECT_GT(Refused(), 0);
}

TEST_F(SignatureCorpus, AModuleWithAppendedDataIsJudgedAsThePlatformJudgesIt)
{
    if (ChildInput())
        return Judge();
    Examine(WithAppendedData(GoodModule()));
    Report("appended data");
    EXPECT_GT(Refused(), 0);
}

TEST_F(SignatureCorpus, ATableOfCertificatesThatIsWrongIsJudgedAsThePlatformJudgesIt)
{
    if (ChildInput())
        return Judge();
    Examine(WithOtherCertificateTables(GoodModule()));
    Report("certificate tables");
    EXPECT_GT(Refused(), 0);
}

TEST_F(SignatureCorpus, EachSignerIsJudgedAsThePlatformJudgesIt)
{
    if (ChildInput())
        return Judge();
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

/// Below a root that the user trusts, what the platform holds against a signer is no longer the root.
class MachineSignatureCorpus : public SignatureCorpus
{
protected:
    void TearDown() override
    {
        if (!ChildInput())
            for (const char* root : Roots)
                UserRoots().Remove(site.RootCertificate(root));
    }

    static constexpr const char* Roots[] = {"trusted-root", "self-signed"};
};

TEST_F(MachineSignatureCorpus, EachSignerBelowATrustedRootIsJudgedAsThePlatformJudgesIt)
{
    if (ChildInput())
        return Judge();
    for (const char* root : Roots)
        UserRoots().Add(site.RootCertificate(root));
    for (const char* plugin : {"marked-trusted", "marked-expired", "marked-wrong-purpose", "marked-self-signed"})
        ExamineBuild(plugin);
    Report("signers below a trusted root");
    EXPECT_GT(Accepted(), 0);
}

} // namespace OrlindexTest
