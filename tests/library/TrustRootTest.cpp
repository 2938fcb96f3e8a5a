// A root that the platform does not trust: which certificate is compared with the pinned one, and what follows.

#include <array>
#include <ostream>

#include "TrustSigners.h"
#include "TrustTest.h"

namespace OrlindexTest {

class UntrustedRoot : public TrustTest
{
protected:
    void SetUp() override
    {
        installation.Install("good");
        verifyResult = 0x800B0109;
    }

    /// Results of the hashing, call by call; the real digest is passed in and may be changed.
    template <typename Change>
    auto ChangedHash(Change change)
    {
        return [this, change](LPCWSTR algorithm, DWORD flags, void* reserved, const BYTE* bytes, DWORD count,
                              BYTE* digest, DWORD* size) {
            EXPECT_STREQ(algorithm, L"SHA256");
            EXPECT_EQ(flags, 0U);
            EXPECT_EQ(reserved, nullptr);
            EXPECT_EQ(*size, 32U);
            EXPECT_EQ(std::string(reinterpret_cast<const char*>(bytes), count), installation.RootCertificate("root"));
            ++hashes;
            CryptHashCertificate2Double::Original(algorithm, flags, reserved, bytes, count, digest, size);
            return change(digest, *size);
        };
    }

    int hashes = 0;
};

TEST_F(UntrustedRoot, ThePinnedRootIsHashedOnce)
{
    const CryptHashCertificate2Double hash(ChangedHash([](BYTE*, DWORD&) { return TRUE; }));
    ExpectAccepted();
    EXPECT_EQ(hashes, 1);
}

TEST_F(UntrustedRoot, NoProviderDataIsNotTrusted)
{
    const WTHelperProvDataFromStateDataDouble none([](HANDLE) -> CRYPT_PROVIDER_DATA* { return nullptr; });
    ExpectRefused(SaidNotTrusted);
}

TEST_F(UntrustedRoot, NoSignerIsNotTrusted)
{
    const SignerCount none(0);
    ExpectRefused(SaidNotTrusted);
}

TEST_F(UntrustedRoot, ASignerThatCannotBeHadIsNotTrusted)
{
    const WTHelperGetProvSignerFromChainDouble none(
        [](CRYPT_PROVIDER_DATA*, DWORD, BOOL, DWORD) -> CRYPT_PROVIDER_SGNR* { return nullptr; });
    const CryptHashCertificate2Double hash(ChangedHash([](BYTE*, DWORD&) { return TRUE; }));
    ExpectRefused(SaidNotTrusted);
    EXPECT_EQ(hashes, 0);
}

TEST_F(UntrustedRoot, ASignerWithoutCertificateIsSkipped)
{
    const WTHelperGetProvCertFromChainDouble none(
        [](CRYPT_PROVIDER_SGNR*, DWORD) -> CRYPT_PROVIDER_CERT* { return nullptr; });
    const CryptHashCertificate2Double hash(ChangedHash([](BYTE*, DWORD&) { return TRUE; }));
    ExpectRefused(SaidNotTrusted);
    EXPECT_EQ(hashes, 0);
}

TEST_F(UntrustedRoot, ASignerThatIsSkippedDoesNotEndTheWalk)
{
    const SignerCount two(2);
    const WTHelperGetProvSignerFromChainDouble firstMissing([](CRYPT_PROVIDER_DATA* data, DWORD index, BOOL counter,
                                                               DWORD counterIndex) {
        return index == 0 ? nullptr : WTHelperGetProvSignerFromChainDouble::Original(data, 0, counter, counterIndex);
    });
    // The second signer has its first certificate at the place where the second is asked for.
    const WTHelperGetProvCertFromChainDouble shifted(
        [](CRYPT_PROVIDER_SGNR* signer, DWORD) { return WTHelperGetProvCertFromChainDouble::Original(signer, 0); });
    const CryptHashCertificate2Double hash(ChangedHash([](BYTE*, DWORD&) { return TRUE; }));
    ExpectAccepted();
    EXPECT_EQ(hashes, 1);
}

TEST_F(UntrustedRoot, ASignerWhoseIndexIsBeyondItsChainIsSkipped)
{
    const SignerCount three(3);
    const ChangedSigner chainOfTwo([](CRYPT_PROVIDER_SGNR& signer) { EXPECT_EQ(signer.csCertChain, 2U); });
    const CryptHashCertificate2Double hash(ChangedHash([](BYTE*, DWORD&) { return FALSE; }));
    ExpectRefused(SaidNotTrusted);
    EXPECT_EQ(hashes, 2);
}

TEST_F(UntrustedRoot, ASignerWithAChainOfNoneIsSkipped)
{
    const WTHelperGetProvCertFromChainDouble leaf(
        [chain = std::array<CRYPT_PROVIDER_CERT, 1>{}](CRYPT_PROVIDER_SGNR*, DWORD) mutable { return chain.data(); });
    const ChangedSigner none([](CRYPT_PROVIDER_SGNR& signer) { signer.csCertChain = 0; });
    const CryptHashCertificate2Double hash(ChangedHash([](BYTE*, DWORD&) { return TRUE; }));
    ExpectRefused(SaidNotTrusted);
    EXPECT_EQ(hashes, 0);
}

TEST_F(UntrustedRoot, ASignerWithoutChainIsSkipped)
{
    const WTHelperGetProvCertFromChainDouble leaf(
        [chain = std::array<CRYPT_PROVIDER_CERT, 1>{}](CRYPT_PROVIDER_SGNR*, DWORD) mutable { return chain.data(); });
    const ChangedSigner chainless([](CRYPT_PROVIDER_SGNR& signer) { signer.pasCertChain = nullptr; });
    const CryptHashCertificate2Double hash(ChangedHash([](BYTE*, DWORD&) { return TRUE; }));
    ExpectRefused(SaidNotTrusted);
    EXPECT_EQ(hashes, 0);
}

TEST_F(UntrustedRoot, ARootWithoutContextIsSkipped)
{
    std::vector<CRYPT_PROVIDER_CERT> chain;
    const ChangedSigner rootless([&chain](CRYPT_PROVIDER_SGNR& signer) {
        chain.assign(signer.pasCertChain, signer.pasCertChain + signer.csCertChain);
        chain.back().pCert = nullptr;
        signer.pasCertChain = chain.data();
    });
    const CryptHashCertificate2Double hash(ChangedHash([](BYTE*, DWORD&) { return TRUE; }));
    ExpectRefused(SaidNotTrusted);
    EXPECT_EQ(hashes, 0);
}

TEST_F(UntrustedRoot, AHashThatFailsGoesOnWithTheNextSigner)
{
    const SignerCount two(2);
    const ChangedSigner twice([](CRYPT_PROVIDER_SGNR&) {});
    const CryptHashCertificate2Double hash(ChangedHash([this](BYTE*, DWORD&) { return hashes == 2; }));
    ExpectAccepted();
    EXPECT_EQ(hashes, 2);
}

TEST_F(UntrustedRoot, AHashThatFailsForEverySignerIsNotTrusted)
{
    const CryptHashCertificate2Double hash(ChangedHash([](BYTE*, DWORD&) { return FALSE; }));
    ExpectRefused(SaidNotTrusted);
    EXPECT_EQ(hashes, 1);
}

TEST_F(UntrustedRoot, AHashThatFailsWithAnotherSizeEndsTheWalkAndIsCompared)
{
    const SignerCount two(2);
    const ChangedSigner twice([](CRYPT_PROVIDER_SGNR&) {});
    const CryptHashCertificate2Double hash(ChangedHash([](BYTE* digest, DWORD& size) {
        std::memset(digest, 0, 32);
        size = 20;
        return FALSE;
    }));
    ExpectRefused(SaidNotTrusted);
    EXPECT_EQ(hashes, 1);
}

TEST_F(UntrustedRoot, AHashThatFailsWithAnotherSizeIsAcceptedWhereItIsThePinnedOne)
{
    const CryptHashCertificate2Double hash(ChangedHash([](BYTE*, DWORD& size) {
        size = 20;
        return FALSE;
    }));
    ExpectAccepted();
    EXPECT_EQ(hashes, 1);
}

TEST_F(UntrustedRoot, ADigestThatDiffersInItsLastBitIsNotTrusted)
{
    const CryptHashCertificate2Double hash(ChangedHash([](BYTE* digest, DWORD&) {
        digest[31] ^= 1;
        return TRUE;
    }));
    ExpectRefused(SaidNotTrusted);
}

TEST_F(UntrustedRoot, OnlyTheFirstHashedSignerCounts)
{
    const SignerCount two(2);
    const ChangedSigner twice([](CRYPT_PROVIDER_SGNR&) {});
    const CryptHashCertificate2Double hash(ChangedHash([this](BYTE* digest, DWORD&) {
        if (hashes == 1)
            digest[0] ^= 1;
        return TRUE;
    }));
    ExpectRefused(SaidNotTrusted);
    EXPECT_EQ(hashes, 1);
}

TEST_F(UntrustedRoot, SuccessOfTheRootCheckWithoutProviderDataAfterwardsIsAMissingSignature)
{
    int asked = 0;
    const WTHelperProvDataFromStateDataDouble onlyOnce([&asked](HANDLE state) {
        return ++asked == 1 ? WTHelperProvDataFromStateDataDouble::Original(state) : nullptr;
    });
    ExpectRefused(SaidMissing);
    EXPECT_EQ(asked, 2);
}

struct ChainStatus
{
    const char* name;
    DWORD errors; ///< CERT_TRUST_...
};

void PrintTo(const ChainStatus& status, std::ostream* stream)
{
    *stream << status.name;
}

class PinnedRoot : public UntrustedRoot, public testing::WithParamInterface<ChainStatus>
{
};

TEST_P(PinnedRoot, LeadsToTheSignersNameWhateverElseTheChainReports)
{
    CERT_CHAIN_CONTEXT context{};
    const ChangedSigner reported([&context](CRYPT_PROVIDER_SGNR& signer) {
        ASSERT_NE(signer.pChainContext, nullptr);
        context = *signer.pChainContext;
        context.TrustStatus.dwErrorStatus = GetParam().errors;
        signer.pChainContext = &context;
    });
    ExpectAccepted();
}

INSTANTIATE_TEST_SUITE_P(Platform, PinnedRoot,
                         testing::Values(ChainStatus{"UntrustedRoot", 0x20}, ChainStatus{"RevocationUnknown", 0x60},
                                         ChainStatus{"RevocationOffline", 0x01000060}, ChainStatus{"Nothing", 0},
                                         ChainStatus{"NotTimeValid", 0x21}, ChainStatus{"Revoked", 0x24},
                                         ChainStatus{"SignatureNotValid", 0x28}, ChainStatus{"NotValidForUsage", 0x30},
                                         ChainStatus{"PartialChain", 0x00010020},
                                         ChainStatus{"WeakSignature", 0x00100020},
                                         ChainStatus{"ExplicitDistrust", 0x04000020},
                                         ChainStatus{"UnsupportedCriticalExtension", 0x08000020}),
                         [](const testing::TestParamInfo<ChainStatus>& row) { return std::string(row.param.name); });

TEST_F(UntrustedRoot, ASignerWhoseNameIsNotListedIsNotTrustedWhateverElseTheChainReports)
{
    installation.Install("stranger");
    CERT_CHAIN_CONTEXT context{};
    const ChangedSigner expired([&context](CRYPT_PROVIDER_SGNR& signer) {
        context = *signer.pChainContext;
        context.TrustStatus.dwErrorStatus = CERT_TRUST_IS_UNTRUSTED_ROOT | CERT_TRUST_IS_NOT_TIME_VALID;
        signer.pChainContext = &context;
    });
    ExpectRefused(SaidNotTrusted);
}

TEST_F(UntrustedRoot, ASignerThatThePlatformKeptNoChainOfIsValid)
{
    const ChangedSigner without([](CRYPT_PROVIDER_SGNR& signer) { signer.pChainContext = nullptr; });
    ExpectAccepted();
}

} // namespace OrlindexTest
