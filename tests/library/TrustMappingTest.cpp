// Verify results of the platform that real files do not cause here: each reason, and the steps to the signer's name.

#include <algorithm>
#include <ostream>
#include <utility>

#include "BuildData.h"
#include "TrustSigners.h"
#include "TrustTest.h"

namespace OrlindexTest {

using testing::Each;
using testing::ElementsAre;
using testing::SizeIs;

struct PlatformResult
{
    const char* name;
    DWORD code;
    const char* reason;
};

void PrintTo(const PlatformResult& result, std::ostream* stream)
{
    *stream << result.name;
}

class VerifyResult : public TrustTest, public testing::WithParamInterface<PlatformResult>
{
};

TEST_P(VerifyResult, IsMappedToItsReason)
{
    installation.Install("good");
    verifyResult = GetParam().code;
    ExpectRefused(GetParam().reason);
    EXPECT_THAT(Calls(), SizeIs(2));
}

INSTANTIATE_TEST_SUITE_P(Platform, VerifyResult,
                         testing::Values(PlatformResult{"ExplicitDistrust", 0x800B0111, SaidNotTrusted},
                                         PlatformResult{"SecuritySettings", 0x80092026, SaidNotTrusted},
                                         PlatformResult{"SubjectNotTrusted", 0x800B0004, SaidNotTrusted},
                                         PlatformResult{"NoSignature", 0x800B0100, SaidInvalid},
                                         PlatformResult{"FileNotFound", 2, SaidNotFound},
                                         PlatformResult{"BadDigest", 0x80096010, SaidUnknownError},
                                         PlatformResult{"Expired", 0x800B0101, SaidUnknownError},
                                         PlatformResult{"Revoked", 0x800B010C, SaidUnknownError},
                                         PlatformResult{"ChainingFailed", 0x800B010A, SaidUnknownError},
                                         PlatformResult{"SubjectFormUnknown", 0x800B0003, SaidUnknownError},
                                         PlatformResult{"PathNotFound", 3, SaidUnknownError},
                                         PlatformResult{"One", 1, SaidUnknownError},
                                         PlatformResult{"AllBitsSet", 0xFFFFFFFF, SaidUnknownError}),
                         [](const testing::TestParamInfo<PlatformResult>& row) { return std::string(row.param.name); });

class TrustedByPlatform : public TrustTest
{
protected:
    void SetUp() override { verifyResult = 0; }
};

TEST_F(TrustedByPlatform, AListedNameIsValidWhateverTheRoot)
{
    installation.Install("other-root");
    ExpectAccepted();
}

TEST_F(TrustedByPlatform, ANameThatIsNotListedIsNotTrusted)
{
    installation.Install("stranger");
    ExpectRefused(SaidNotTrusted);
}

TEST_F(TrustedByPlatform, SuccessWithoutProviderDataIsAMissingSignature)
{
    installation.Install("good");
    const WTHelperProvDataFromStateDataDouble none([](HANDLE) -> CRYPT_PROVIDER_DATA* { return nullptr; });
    ExpectRefused(SaidMissing);
}

TEST_F(TrustedByPlatform, ThePinnedRootIsNotLookedAt)
{
    installation.Install("good");
    int hashes = 0;
    const CryptHashCertificate2Double count([&](auto... arguments) {
        ++hashes;
        return CryptHashCertificate2Double::Original(arguments...);
    });
    ExpectAccepted();
    EXPECT_EQ(hashes, 0);
}

TEST_F(TrustedByPlatform, NoSignerIsNotTrusted)
{
    installation.Install("good");
    const SignerCount none(0);
    ExpectRefused(SaidNotTrusted);
}

TEST_F(TrustedByPlatform, ASignerThatCannotBeHadIsSkipped)
{
    installation.Install("good");
    const SignerCount two(2);
    const WTHelperGetProvSignerFromChainDouble firstMissing([](CRYPT_PROVIDER_DATA* data, DWORD index, BOOL counter,
                                                               DWORD counterIndex) {
        return index == 0 ? nullptr : WTHelperGetProvSignerFromChainDouble::Original(data, 0, counter, counterIndex);
    });
    // The second signer has its first certificate at the place where the second is asked for.
    const WTHelperGetProvCertFromChainDouble shifted(
        [](CRYPT_PROVIDER_SGNR* signer, DWORD) { return WTHelperGetProvCertFromChainDouble::Original(signer, 0); });
    ExpectAccepted();
}

TEST_F(TrustedByPlatform, ACertificateWithoutContextIsSkipped)
{
    installation.Install("good");
    CRYPT_PROVIDER_CERT empty{};
    empty.cbStruct = sizeof empty;
    const WTHelperGetProvCertFromChainDouble without([&empty](CRYPT_PROVIDER_SGNR*, DWORD) { return &empty; });
    ExpectRefused(SaidNotTrusted);
}

TEST_F(TrustedByPlatform, ASignerWhoseCertificateHasNoContextIsSkipped)
{
    installation.Install("good");
    const SignerCount two(2);
    const ChangedSigner twice([](CRYPT_PROVIDER_SGNR&) {});
    CRYPT_PROVIDER_CERT empty{};
    empty.cbStruct = sizeof empty;
    const WTHelperGetProvCertFromChainDouble firstWithout([&empty](CRYPT_PROVIDER_SGNR* signer, DWORD index) {
        return index == 0 ? &empty : WTHelperGetProvCertFromChainDouble::Original(signer, 0);
    });
    ExpectAccepted();
}

TEST_F(TrustedByPlatform, TheSignersIndexIsTheCertificatesIndexToo)
{
    installation.Install("stranger");
    const SignerCount three(3);
    std::vector<std::pair<DWORD, BOOL>> signers;
    std::vector<DWORD> counterSigners;
    std::vector<DWORD> certificates;
    const WTHelperGetProvSignerFromChainDouble recordSigner(
        [&](CRYPT_PROVIDER_DATA* data, DWORD index, BOOL counter, DWORD counterIndex) {
            signers.emplace_back(index, counter);
            counterSigners.push_back(counterIndex);
            return WTHelperGetProvSignerFromChainDouble::Original(data, 0, counter, counterIndex);
        });
    const WTHelperGetProvCertFromChainDouble recordCertificate(
        [&certificates](CRYPT_PROVIDER_SGNR* signer, DWORD index) {
            certificates.push_back(index);
            return WTHelperGetProvCertFromChainDouble::Original(signer, index);
        });
    ExpectRefused(SaidNotTrusted);
    EXPECT_THAT(signers, ElementsAre(std::pair{0U, FALSE}, std::pair{1U, FALSE}, std::pair{2U, FALSE}));
    EXPECT_THAT(counterSigners, Each(0U));
    EXPECT_THAT(certificates, ElementsAre(0U, 1U, 2U));
}

TEST_F(TrustedByPlatform, TheFirstMatchingSignerEndsTheWalk)
{
    installation.Install("good");
    const SignerCount three(3);
    int asked = 0;
    const WTHelperGetProvCertFromChainDouble count([&asked](CRYPT_PROVIDER_SGNR* signer, DWORD) {
        ++asked;
        return WTHelperGetProvCertFromChainDouble::Original(signer, 0);
    });
    ExpectAccepted();
    EXPECT_EQ(asked, 1);
}

struct Name
{
    const char* name;
    std::string text; ///< With its terminating zero, or whatever the platform claims to have written.
    bool listed;
};

void PrintTo(const Name& name, std::ostream* stream)
{
    *stream << name.name;
}

class SignerName : public TrustTest, public testing::WithParamInterface<Name>
{
};

TEST_P(SignerName, IsComparedByteForByte)
{
    installation.Install("good");
    const std::string& text = GetParam().text;
    const CertGetNameStringADouble name(
        [&text](PCCERT_CONTEXT, DWORD type, DWORD flags, void* parameter, LPSTR buffer, DWORD size) {
            EXPECT_EQ(type, 4U);
            EXPECT_EQ(flags, 0U);
            EXPECT_EQ(parameter, nullptr);
            if (buffer != nullptr)
            {
                EXPECT_EQ(size, text.size());
                std::memcpy(buffer, text.data(), text.size());
            }
            return static_cast<DWORD>(text.size());
        });
    const CertGetNameStringWDouble wide([&text](PCCERT_CONTEXT, DWORD, DWORD, void*, LPWSTR buffer, DWORD size) {
        const auto length = std::min<std::size_t>(text.size(), size);
        std::copy_n(text.begin(), length, buffer);
        return static_cast<DWORD>(length);
    });
    if (GetParam().listed)
        ExpectAccepted();
    else
        ExpectRefused(SaidNotTrusted);
}

INSTANTIATE_TEST_SUITE_P(Platform, SignerName,
                         testing::Values(Name{"First", std::string("Kestrany, Inc.", 15), true},
                                         Name{"Second", std::string("Kestrany Asia Pte", 18), true},
                                         Name{"Empty", std::string("", 1), false},
                                         Name{"NoLength", std::string(), false},
                                         Name{"LongerByOne", std::string("Kestrany, Inc.x", 16), false},
                                         Name{"Beginning", std::string("Kestrany", 9), false},
                                         Name{"LeadingSpace", std::string(" Kestrany, Inc.", 16), false},
                                         Name{"BothNames", std::string("Kestrany, Inc.\0Kestrany Asia Pte", 33), false},
                                         Name{"ZeroBehindTheName", std::string("Kestrany, Inc.\0", 16), false}),
                         [](const testing::TestParamInfo<Name>& row) { return std::string(row.param.name); });

TEST_F(TrustedByPlatform, ANameThatCannotBeFetchedAfterItsLengthWasLearntIsNotTrusted)
{
    installation.Install("good");
    const CertGetNameStringADouble name([](PCCERT_CONTEXT, DWORD, DWORD, void*, LPSTR buffer, DWORD) -> DWORD {
        if (buffer == nullptr)
            return 15;
        std::memcpy(buffer, "Kestrany, Inc.", 15);
        return 1;
    });
    ExpectRefused(SaidNotTrusted);
}

// The list contains each name with its NUL and nothing else; the root is that of this build.
static_assert(sizeof(Kestrany::BuildData::TrustedSigners) == 33);
static_assert(Kestrany::BuildData::DevelopmentRoot);

} // namespace OrlindexTest
