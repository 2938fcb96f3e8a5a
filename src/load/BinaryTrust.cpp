#include "load/BinaryTrust.h"

#include <optional>
#include <windows.h>

#include <shlwapi.h>

#include "BuildData.h"
#include "base/Log.h"
#include "base/MessageFormat.h"
#include "load/SignerName.h"
#include "load/StartObserver.h"
#include "load/TrustState.h"

namespace Kestrany::IdentityServices {
namespace {

/// The root of the chain that the platform keeps of a signer; null where a step is missing.
PCCERT_CONTEXT RootOf(CRYPT_PROVIDER_SGNR* signer, DWORD index)
{
    if (!signer || !CertificateAt(signer, index) || !signer->pasCertChain || signer->csCertChain == 0)
        return nullptr;
    return signer->pasCertChain[signer->csCertChain - 1].pCert;
}

/// The digest of the first root that can be hashed; nullopt if there is none. It alone counts, on purpose: a module
/// with several signers is judged by the first, and no later one makes up for it.
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
BinaryTrustResult CheckSignerName(const TrustState& state, std::string_view signers)
{
    CRYPT_PROVIDER_DATA* provider = state.ProviderData();
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
BinaryTrustResult CheckUntrustedRoot(const TrustState& state, std::string_view signers)
{
    CRYPT_PROVIDER_DATA* provider = state.ProviderData();
    const std::optional<Sha256> root = provider ? FirstRootDigest(provider) : std::nullopt;
    if (!root || !IsPinnedRoot(*root))
        return BinaryTrustResult::NotTrusted;
    return CheckSignerName(state, signers);
}

BinaryTrustResult Judge(LONG answer, const TrustState& state, std::string_view signers)
{
    // Compared as unsigned: some of the platform's names are of a signed type and some are not.
    switch (static_cast<DWORD>(answer))
    {
    case static_cast<DWORD>(ERROR_SUCCESS):
        return CheckSignerName(state, signers);
    case static_cast<DWORD>(CERT_E_UNTRUSTEDROOT):
        return CheckUntrustedRoot(state, signers);
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

BinaryTrustResult VerifyBinaryTrust(const std::wstring& path, std::string_view signers, TrustEvidence* evidence)
{
    TrustState state(path); // Closed on every way out, also where nothing is verified.
    if (path.empty() || !PathFileExistsW(path.c_str()))
        return BinaryTrustResult::NotFound;
    const LONG answer = state.Verify();
    if (evidence)
    {
        evidence->platformAnswer = answer;
        evidence->signers = CollectSigners(state, signers);
    }
    return Judge(answer, state, signers);
}

bool CheckClientPluginBinary(const std::wstring& path, const std::wstring& file, StartObserver* observer)
{
    DefaultLogFunction(Message(L"******* Binary file: checking: %1%", path), TALIXLog::Info);
    const std::string_view signers(BuildData::TrustedSigners, sizeof BuildData::TrustedSigners);
    TrustEvidence evidence;
    const BinaryTrustResult result = VerifyBinaryTrust(file, signers, observer ? &evidence : nullptr);
    if (observer)
    {
        evidence.path = path;
        evidence.result = result;
        observer->OnSignature(evidence);
    }
    const TrustMessage& message = TrustMessageFor(result);
    DefaultLogFunction(Message(message.text, path), message.level);
    return LoadingAllowed(result);
}

} // namespace Kestrany::IdentityServices
