#include "load/TrustEvidence.h"

#include <algorithm>
#include <iterator>

#include "BuildData.h"
#include "load/SignerName.h"
#include "load/TrustState.h"

namespace Kestrany::IdentityServices {
namespace {

static_assert(std::size(BuildData::PinnedRootSha256) == std::tuple_size<Sha256>::value, "a SHA-256 digest");

template <class Read>
std::wstring CertificateText(const Read& read)
{
    const DWORD needed = read(nullptr, 0); // With the terminating zero.
    std::wstring text(needed, L'\0');
    const DWORD length = needed > 0 ? read(text.data(), needed) : 0;
    text.resize(length > 0 ? std::min(length, needed) - 1 : 0);
    return text;
}

CertificateEvidence Describe(PCCERT_CONTEXT certificate)
{
    CertificateEvidence evidence = {};
    evidence.name = CertificateText([certificate](wchar_t* buffer, DWORD size) {
        return CertGetNameStringW(certificate, CERT_NAME_SIMPLE_DISPLAY_TYPE, 0, nullptr, buffer, size);
    });
    evidence.subject = CertificateText([certificate](wchar_t* buffer, DWORD size) {
        return CertNameToStrW(X509_ASN_ENCODING, &certificate->pCertInfo->Subject, CERT_X500_NAME_STR, buffer, size);
    });
    evidence.notBefore = certificate->pCertInfo->NotBefore;
    evidence.notAfter = certificate->pCertInfo->NotAfter;
    evidence.digest = CertificateDigest(certificate);
    return evidence;
}

} // namespace

std::optional<Sha256> CertificateDigest(PCCERT_CONTEXT certificate)
{
    Sha256 digest = {};
    auto size = static_cast<DWORD>(digest.size());
    const BOOL hashed = CryptHashCertificate2(L"SHA256", 0, nullptr, certificate->pbCertEncoded,
                                              certificate->cbCertEncoded, digest.data(), &size);
    // A call that fails and reports another size counts as a digest, on purpose: the comparison decides, and a buffer
    // that was not filled equals no pinned root.
    if (hashed || size != digest.size())
        return digest;
    return std::nullopt;
}

bool IsPinnedRoot(const Sha256& digest)
{
    return std::equal(digest.begin(), digest.end(), std::begin(BuildData::PinnedRootSha256));
}

std::vector<SignerEvidence> CollectSigners(const TrustState& state, std::string_view signers)
{
    std::vector<SignerEvidence> evidence;
    CRYPT_PROVIDER_DATA* provider = state.ProviderData();
    for (DWORD index = 0; provider && index < provider->csSigners; ++index)
    {
        CRYPT_PROVIDER_SGNR* signer = SignerAt(provider, index);
        if (!signer)
            continue;
        const CRYPT_PROVIDER_CERT* own = CertificateAt(signer, index);
        SignerEvidence found = {own && own->pCert && SignerNameMatches(own->pCert, signers), {}};
        found.otherChainFaults = OtherChainFaults(*signer);
        for (DWORD link = 0; signer->pasCertChain && link < signer->csCertChain; ++link)
        {
            if (PCCERT_CONTEXT certificate = signer->pasCertChain[link].pCert)
                found.chain.push_back(Describe(certificate));
        }
        evidence.push_back(std::move(found));
    }
    return evidence;
}

} // namespace Kestrany::IdentityServices
