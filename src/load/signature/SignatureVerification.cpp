#include "load/signature/SignatureVerification.h"

#include <algorithm>
#include <iterator>

#include <shlwapi.h>

#include "BuildData.h"
#include "base/Log.h"
#include "base/Message.h"
#include "load/signature/WinTrustSession.h"

namespace Kestrany::IdentityServices {
namespace {

static_assert(std::size(BuildData::PinnedRootSha256) == std::tuple_size<Sha256>::value, "a SHA-256 digest");

std::string SimpleDisplayName(PCCERT_CONTEXT certificate)
{
    // Lengths include the terminating NUL; an absent name has length 1. The narrow function, on purpose: the list's
    // names are bytes, and are compared as such.
    const DWORD needed = CertGetNameStringA(certificate, CERT_NAME_SIMPLE_DISPLAY_TYPE, 0, nullptr, nullptr, 0);
    if (needed < 2)
        return {};
    std::string name(needed, '\0');
    const DWORD length =
        CertGetNameStringA(certificate, CERT_NAME_SIMPLE_DISPLAY_TYPE, 0, nullptr, name.data(), needed);
    if (length < 2 || length > needed)
        return {};
    name.resize(length - 1);
    return name;
}

/// A conversion to the narrow code page takes letters that look alike for ASCII ones, and only the wide name tells them
/// apart. Accepted names are ASCII.
bool IsWideName(PCCERT_CONTEXT certificate, const std::string& name)
{
    std::wstring wide(name.size() + 2, L'\0'); // A longer name fills it.
    const DWORD length = CertGetNameStringW(certificate, CERT_NAME_SIMPLE_DISPLAY_TYPE, 0, nullptr, wide.data(),
                                            static_cast<DWORD>(wide.size()));
    if (length != name.size() + 1)
        return false;
    return std::equal(name.begin(), name.end(), wide.begin(),
                      [](char narrow, wchar_t unit) { return static_cast<unsigned char>(narrow) == unit; });
}

/// The root of the chain that the platform keeps of a signer; null if a step is missing.
PCCERT_CONTEXT RootOf(CRYPT_PROVIDER_SGNR* signer, DWORD index)
{
    if (!signer || !CertificateAt(signer, index) || !signer->pasCertChain || signer->csCertChain == 0)
        return nullptr;
    return signer->pasCertChain[signer->csCertChain - 1].pCert;
}

/// The digest of the first root that can be hashed; nullopt if there is none. It alone counts, on purpose: a module
/// with several signers counts by the first, and no later one makes up for it.
std::optional<Sha256> FirstRootDigest(CRYPT_PROVIDER_DATA* provider)
{
    for (DWORD index = 0; index < provider->csSigners; ++index)
    {
        PCCERT_CONTEXT root = RootOf(SignerAt(provider, index), index);
        if (!root)
            continue;
        if (const std::optional<Sha256> digest = CertificateDigest(root))
            return digest;
    }
    return std::nullopt;
}

/// Asks for the provider data again: they may be gone by now, which is a missing signature, not a missing trust.
BinaryTrustResult CheckSignerName(const WinTrustSession& session, std::string_view signers)
{
    CRYPT_PROVIDER_DATA* provider = session.ProviderData();
    if (!provider)
        return BinaryTrustResult::SignatureMissing;
    for (DWORD index = 0; index < provider->csSigners; ++index)
    {
        CRYPT_PROVIDER_SGNR* signer = SignerAt(provider, index);
        const CRYPT_PROVIDER_CERT* certificate = signer ? CertificateAt(signer, index) : nullptr;
        if (certificate && certificate->pCert && SignerNameMatches(certificate->pCert, signers))
            return BinaryTrustResult::Valid;
    }
    return BinaryTrustResult::NotTrusted;
}

/// The pinned root takes the place of one that the platform trusts, and the signer's name decides. What else the
/// platform reports about the chain does not count, on purpose: age, purpose and revocation below the pinned root are
/// its owner's matter.
BinaryTrustResult CheckUntrustedRoot(const WinTrustSession& session, std::string_view signers)
{
    CRYPT_PROVIDER_DATA* provider = session.ProviderData();
    const std::optional<Sha256> root = provider ? FirstRootDigest(provider) : std::nullopt;
    if (!root || !IsPinnedRoot(*root))
        return BinaryTrustResult::NotTrusted;
    return CheckSignerName(session, signers);
}

BinaryTrustResult MapResult(LONG platformResult, const WinTrustSession& session, std::string_view signers)
{
    // Compared as unsigned: some of the platform's names are of a signed type and some are not.
    switch (static_cast<DWORD>(platformResult))
    {
    case static_cast<DWORD>(ERROR_SUCCESS):
        return CheckSignerName(session, signers);
    case static_cast<DWORD>(CERT_E_UNTRUSTEDROOT):
        return CheckUntrustedRoot(session, signers);
    case static_cast<DWORD>(TRUST_E_EXPLICIT_DISTRUST):
    case static_cast<DWORD>(CRYPT_E_SECURITY_SETTINGS):
    case static_cast<DWORD>(TRUST_E_SUBJECT_NOT_TRUSTED):
        return BinaryTrustResult::NotTrusted;
    case static_cast<DWORD>(TRUST_E_NOSIGNATURE):
        return BinaryTrustResult::SignatureInvalid; // Not SignatureMissing: see BinaryTrustResult.
    case static_cast<DWORD>(ERROR_FILE_NOT_FOUND):
        return BinaryTrustResult::NotFound;
    default:
        return BinaryTrustResult::UnknownError;
    }
}

} // namespace

SignatureVerification VerifyBinaryTrust(const std::wstring& path, std::string_view signers)
{
    WinTrustSession session(path); // Closed on every way out, also if nothing is verified.
    if (path.empty() || !PathFileExistsW(path.c_str()))
        return {BinaryTrustResult::NotFound, std::nullopt};
    const LONG platformResult = session.Verify();
    return {MapResult(platformResult, session, signers), platformResult};
}

std::string_view TrustedSigners()
{
    return {BuildData::TrustedSigners, sizeof BuildData::TrustedSigners};
}

SignatureVerification CheckClientPluginBinary(const std::wstring& path, const std::wstring& file)
{
    DefaultLogFunction(Message(L"******* Binary file: checking: %1%", path), TALIXLog::Info);
    const SignatureVerification verification = VerifyBinaryTrust(file, TrustedSigners());
    const TrustMessage& message = TrustMessageFor(verification.result);
    DefaultLogFunction(Message(message.text, path), message.level);
    return verification;
}

bool SignerNameMatches(PCCERT_CONTEXT certificate, std::string_view signers)
{
    const std::string name = SimpleDisplayName(certificate);
    for (std::size_t end = signers.find('\0'); end != std::string_view::npos; end = signers.find('\0'))
    {
        if (signers.substr(0, end) == name)
            return IsWideName(certificate, name);
        signers.remove_prefix(end + 1);
    }
    return false;
}

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

} // namespace Kestrany::IdentityServices
