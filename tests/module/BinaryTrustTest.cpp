// Verification of a missing file: the callers in the library make sure that there is one.

#include <gtest/gtest.h>
#include <vector>
#include <windows.h>

#include <softpub.h>
#include <wintrust.h>

#include "Imports.h"
#include "load/signature/SignatureInfo.h"
#include "load/signature/SignatureVerification.h"
#include "load/signature/WinTrustSession.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;

namespace {

} // namespace

TEST(BinaryTrust, AnEmptyPathIsNotFoundAndGetsTheClosingCallAlone)
{
    std::vector<DWORD> actions;
    const WinVerifyTrustDouble verify(
        [&actions](HWND window, GUID* action, LPVOID data) {
            const GUID genericVerify2 = WINTRUST_ACTION_GENERIC_VERIFY_V2;
            const auto& trust = *static_cast<const WINTRUST_DATA*>(data);
            EXPECT_EQ(window, nullptr);
            EXPECT_TRUE(IsEqualGUID(*action, genericVerify2));
            EXPECT_EQ(trust.hWVTStateData, nullptr);
            EXPECT_STREQ(trust.pFile->pcwszFilePath, L"");
            actions.push_back(trust.dwStateAction);
            return LONG{0};
        },
        Executable());
    const SignatureVerification verification = VerifyBinaryTrust({}, {});
    EXPECT_EQ(verification.result, BinaryTrustResult::NotFound);
    EXPECT_EQ(verification.platformResult, std::nullopt);
    EXPECT_EQ(actions, std::vector<DWORD>{WTD_STATEACTION_CLOSE});
}

TEST(BinaryTrust, TheOtherFaultsOfAChainAreThoseBesideTheRootAndTheRevocation)
{
    CRYPT_PROVIDER_SGNR signer{};
    EXPECT_EQ(OtherChainFaults(signer), 0u) << "no chain was kept";
    CERT_CHAIN_CONTEXT context{};
    signer.pChainContext = &context;
    EXPECT_EQ(OtherChainFaults(signer), 0u);
    context.TrustStatus.dwErrorStatus = CERT_TRUST_IS_UNTRUSTED_ROOT | CERT_TRUST_REVOCATION_STATUS_UNKNOWN |
                                        CERT_TRUST_IS_OFFLINE_REVOCATION | CERT_TRUST_IS_NOT_TIME_VALID;
    EXPECT_EQ(OtherChainFaults(signer), static_cast<DWORD>(CERT_TRUST_IS_NOT_TIME_VALID));
}

} // namespace OrlindexTest
