// Really signed and unsigned files: which are accepted, and which messages the others cause.

#include "TrustTest.h"

namespace OrlindexTest {

using testing::SizeIs;

class Signature : public TrustTest
{
};

TEST_F(Signature, AListedNameBelowThePinnedRootIsValid)
{
    installation.Install("good");
    ExpectAccepted();
}

TEST_F(Signature, TheSecondListedNameBelowThePinnedRootIsValid)
{
    installation.Install("asia");
    ExpectAccepted();
}

TEST_F(Signature, AListedNameBelowAnotherUntrustedRootIsNotTrusted)
{
    installation.Install("other-root");
    ExpectRefused(SaidNotTrusted);
}

TEST_F(Signature, AListedNameInOtherLetterCaseIsNotTrusted)
{
    installation.Install("wrong-case");
    ExpectRefused(SaidNotTrusted);
}

TEST_F(Signature, AListedNameWithATrailingSpaceIsNotTrusted)
{
    installation.Install("trailing-space");
    ExpectRefused(SaidNotTrusted);
}

TEST_F(Signature, TheFirstListedNameWithoutItsFinalPointIsNotTrusted)
{
    installation.Install("no-point");
    ExpectRefused(SaidNotTrusted);
}

TEST_F(Signature, TheSecondListedNameWithAFinalPointIsNotTrusted)
{
    installation.Install("asia-point");
    ExpectRefused(SaidNotTrusted);
}

TEST_F(Signature, ANameThatIsNotListedBelowThePinnedRootIsNotTrusted)
{
    installation.Install("stranger");
    ExpectRefused(SaidNotTrusted);
}

TEST_F(Signature, ANameThatLooksLikeAListedOneIsNotTrusted)
{
    installation.Install("look-alike");
    ExpectRefused(SaidNotTrusted);
}

TEST_F(Signature, AnExpiredCertificateBelowThePinnedRootIsValid)
{
    installation.Install("pinned-expired");
    ExpectAccepted();
}

TEST_F(Signature, AnExpiredCertificateBelowAnotherUntrustedRootIsNotTrusted)
{
    installation.Install("expired");
    ExpectRefused(SaidNotTrusted);
}

TEST_F(Signature, AnUnsignedFileIsInvalid)
{
    installation.Install("unsigned");
    ExpectRefused(SaidInvalid);
}

TEST_F(Signature, AFileChangedAfterSigningIsAnUnknownError)
{
    installation.Install("good");
    Tamper(installation.PluginFile());
    ExpectRefused(SaidUnknownError);
}

TEST_F(Signature, AFileCutAfterSigningIsRefused)
{
    // The signature is at the end, so nothing of it is left.
    installation.Install("good");
    Truncate(installation.PluginFile());
    ExpectRefused(SaidInvalid);
}

TEST_F(Signature, AFileThatIsNoModuleIsAnUnknownError)
{
    installation.InstallWithoutPlugin();
    WriteFile(installation.PluginFile(), "no module");
    ExpectRefused(SaidUnknownError);
}

TEST_F(Signature, TheTrustDataAskForASilentCheckOfTheFileWithoutRevocation)
{
    installation.Install("good");
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
        EXPECT_EQ(call.path, installation.PluginFile().native());
    }
    EXPECT_EQ(Calls()[0].stateAction, 1U);
    EXPECT_EQ(Calls()[0].state, nullptr);
    EXPECT_EQ(Calls()[0].file->hFile, nullptr) << "the platform opens the file itself";
    EXPECT_EQ(Calls()[1].stateAction, 2U);
    EXPECT_NE(Calls()[1].state, nullptr);
}

TEST_F(Signature, AFileThatIsGoneByThenIsNotFoundAndOnlyTheClosingCallIsMade)
{
    installation.Install("good");
    const PathFileExistsDouble gone([](LPCWSTR) { return FALSE; });
    ExpectRefused(SaidNotFound);
    ASSERT_THAT(Calls(), SizeIs(1));
    EXPECT_EQ(Calls()[0].stateAction, 2U);
}

} // namespace OrlindexTest
