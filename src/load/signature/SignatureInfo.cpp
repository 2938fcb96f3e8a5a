#include "load/signature/SignatureInfo.h"

#include <algorithm>

#include "load/signature/WinTrustSession.h"

namespace Kestrany::IdentityServices {
namespace {

template <class Read>
std::wstring CertificateText(const Read& read)
{
    const DWORD needed = read(nullptr, 0); // Including the terminating zero.
    std::wstring text(needed, L'\0');
    // not covered: No file makes the platform leave this out.
    const DWORD length = needed > 0 ? read(text.data(), needed) : 0;
    // not covered: No file makes the platform leave this out.
    text.resize(length > 0 ? std::min(length, needed) - 1 : 0);
    return text;
}

CertificateInfo DescribeCertificate(PCCERT_CONTEXT certificate)
{
    CertificateInfo info = {};
    info.name = CertificateText([certificate](wchar_t* buffer, DWORD size) {
        return CertGetNameStringW(certificate, CERT_NAME_SIMPLE_DISPLAY_TYPE, 0, nullptr, buffer, size);
    });
    info.subject = CertificateText([certificate](wchar_t* buffer, DWORD size) {
        return CertNameToStrW(X509_ASN_ENCODING, &certificate->pCertInfo->Subject, CERT_X500_NAME_STR, buffer, size);
    });
    info.notBefore = certificate->pCertInfo->NotBefore;
    info.notAfter = certificate->pCertInfo->NotAfter;
    info.digest = CertificateDigest(certificate);
    return info;
}

SignerInfo DescribeSigner(CRYPT_PROVIDER_SGNR* signer, DWORD index, std::string_view signers)
{
    const CRYPT_PROVIDER_CERT* own = CertificateAt(signer, index);
    // not covered: No file makes the platform leave this out.
    SignerInfo info = {own && own->pCert && SignerNameMatches(own->pCert, signers), {}, OtherChainFaults(*signer)};
    // not covered: No file makes the platform leave this out.
    for (DWORD link = 0; signer->pasCertChain && link < signer->csCertChain; ++link)
    {
        // not covered: No file makes the platform leave this out.
        if (PCCERT_CONTEXT certificate = signer->pasCertChain[link].pCert)
            info.chain.push_back(DescribeCertificate(certificate));
    }
    return info;
}

} // namespace

DWORD OtherChainFaults(const CRYPT_PROVIDER_SGNR& signer)
{
    constexpr DWORD known =
        CERT_TRUST_IS_UNTRUSTED_ROOT | CERT_TRUST_REVOCATION_STATUS_UNKNOWN | CERT_TRUST_IS_OFFLINE_REVOCATION;
    return signer.pChainContext ? signer.pChainContext->TrustStatus.dwErrorStatus & ~known : 0;
}

std::vector<SignerInfo> DescribeSigners(const std::wstring& file, std::string_view signers)
{
    std::vector<SignerInfo> infos;
    WinTrustSession session(file);
    session.Verify();
    CRYPT_PROVIDER_DATA* provider = session.ProviderData();
    // not covered: No file makes the platform leave this out.
    for (DWORD index = 0; provider && index < provider->csSigners; ++index)
    {
        // not covered: No file makes the platform leave this out.
        if (CRYPT_PROVIDER_SGNR* signer = SignerAt(provider, index))
            infos.push_back(DescribeSigner(signer, index, signers));
    }
    return infos;
}

} // namespace Kestrany::IdentityServices
