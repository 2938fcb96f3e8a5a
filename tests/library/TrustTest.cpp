// Files that are really signed, or really not: which are accepted, and what is said of the others.

#include "TrustTest.h"

namespace OrlindexTest {

using testing::SizeIs;

class Signature : public TrustTest
{
};

TEST_F(Signature, AListedNameBelowThePinnedRootIsValid)
{
    site.Install("good");
    ExpectAccepted();
}

TEST_F(Signature, TheSecondListedNameBelowThePinnedRootIsValid)
{
    site.Install("asia");
    ExpectAccepted();
}

TEST_F(Signature, AListedNameBelowAnotherUntrustedRootIsNotTrusted)
{
    site.Install("other-root");
    ExpectRefused(SaidNotTrusted);
}

TEST_F(Signature, AListedNameInOtherLetterCaseIsNotTrusted)
{
    site.Install("wrong-case");
    ExpectRefused(SaidNotTrusted);
}

TEST_F(Signature, AListedNameWithATrailingSpaceIsNotTrusted)
{
    site.Install("trailing-space");
    ExpectRefused(SaidNotTrusted);
}

TEST_F(Signature, TheFirstListedNameWithoutItsFinalPointIsNotTrusted)
{
    site.Install("no-point");
    ExpectRefused(SaidNotTrusted);
}

TEST_F(Signature, TheSecondListedNameWithAFinalPointIsNotTrusted)
{
    site.Install("asia-point");
    ExpectRefused(SaidNotTrusted);
}

TEST_F(Signature, ANameThatIsNotListedBelowThePinnedRootIsNotTrusted)
{
    site.Install("stranger");
    ExpectRefused(SaidNotTrusted);
}

TEST_F(Signature, ANameThatLooksLikeAListedOneIsNotTrusted)
{
    site.Install("look-alike");
    ExpectRefused(SaidNotTrusted);
}

TEST_F(Signature, AnExpiredCertificateBelowThePinnedRootIsValid)
{
    site.Install("pinned-expired");
    ExpectAccepted();
}

TEST_F(Signature, AnExpiredCertificateBelowAnotherUntrustedRootIsNotTrusted)
{
    site.Install("expired");
    ExpectRefused(SaidNotTrusted);
}

TEST_F(Signature, AnUnsignedFileIsInvalid)
{
    site.Install("unsigned");
    ExpectRefused(SaidInvalid);
}

TEST_F(Signature, AFileChangedAfterSigningIsAnUnknownError)
{
    site.Install("good");
    Tamper(site.PluginFile());
    ExpectRefused(SaidUnknownError);
}

TEST_F(Signature, AFileCutAfterSigningIsRefused)
{
    // The signature lies at the end, so nothing is left of it.
    site.Install("good");
    Truncate(site.PluginFile());
    ExpectRefused(SaidInvalid);
}

TEST_F(Signature, AFileThatIsNoModuleIsAnUnknownError)
{
    site.InstallWithoutPlugin();
    WriteFile(site.PluginFile(), "no module");
    ExpectRefused(SaidUnknownError);
}

TEST_F(Signature, TheTrustDataAskForASilentCheckOfTheFileWithoutRevocation)
{
    site.Install("good");
    ExpectAccepted();
    ASSERT_THAT(Calls(), SizeIs(2));
    for (const VerifyCall& call : Calls())
    {
        const GUID genericVerify2 = WINTRUST_ACTION_GENERIC_VERIFY_V2;
        EXPECT_EQ(call.window, nullptr);
        EXPECT_TRUE(IsEqualGUID(call.action, genericVerify2));
        EXPECT_EQ(call.data.cbStruct, 88U);
        EXPECT_EQ(call.data.pPolicyCallbackData, nullptr);
        EXPECT_EQ(call.data.pSIPClientData, nullptr);
        EXPECT_EQ(call.data.dwUIChoice, 2U);
        EXPECT_EQ(call.data.fdwRevocationChecks, 0U);
        EXPECT_EQ(call.data.dwUnionChoice, 1U);
        EXPECT_EQ(call.data.pwszURLReference, nullptr);
        EXPECT_EQ(call.data.dwProvFlags, 0x10U);
        EXPECT_EQ(call.data.dwUIContext, 0U);
        EXPECT_EQ(call.signatureSettings, nullptr);
        ASSERT_TRUE(call.file.has_value());
        EXPECT_EQ(call.file->cbStruct, 32U);
        EXPECT_EQ(call.file->pgKnownSubject, nullptr);
        EXPECT_EQ(call.path, site.PluginFile().native());
    }
    EXPECT_EQ(Calls()[0].stateAction, 1U);
    EXPECT_EQ(Calls()[0].state, nullptr);
    EXPECT_EQ(Calls()[0].file->hFile, nullptr) << "the platform opens the file itself";
    EXPECT_EQ(Calls()[1].stateAction, 2U);
    EXPECT_NE(Calls()[1].state, nullptr);
}

TEST_F(Signature, AFileThatIsGoneByThenIsNotFoundAndOnlyTheClosingCallIsMade)
{
    site.Install("good");
    const PathFileExistsDouble gone([](LPCWSTR) { return FALSE; });
    ExpectRefused(SaidNotFound);
    ASSERT_THAT(Calls(), SizeIs(1));
    EXPECT_EQ(Calls()[0].stateAction, 2U);
}

} // namespace OrlindexTest
