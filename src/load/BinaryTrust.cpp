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

/// The root of a signer's chain, by the path that the platform's data offers; null where a step is missing.
PCCERT_CONTEXT RootOf(CRYPT_PROVIDER_SGNR* signer, DWORD index)
{
    if (!signer || !CertificateAt(signer, index) || !signer->pasCertChain || signer->csCertChain == 0)
        return nullptr;
    return signer->pasCertChain[signer->csCertChain - 1].pCert;
}

struct HashedRoot
{
    Sha256 digest;
    DWORD otherFaults; ///< Of the chain that it ends.
};

/// The first signer's root that can be hashed.
std::optional<HashedRoot> FirstHashedRoot(CRYPT_PROVIDER_DATA* provider)
{
    for (DWORD index = 0; index < provider->csSigners; ++index)
    {
        CRYPT_PROVIDER_SGNR* signer = SignerAt(provider, index);
        PCCERT_CONTEXT root = RootOf(signer, index);
        if (!root)
            continue;
        if (const std::optional<Sha256> digest = CertificateDigest(root))
            return HashedRoot{*digest, OtherChainFaults(*signer)};
    }
    return std::nullopt;
}

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

/// The pinned root stands for one that the platform trusts. It makes up for nothing else: the platform's answer names
/// the root alone where the signer's certificate has expired too, or is for another purpose.
BinaryTrustResult CheckUntrustedRoot(const TrustState& state, std::string_view signers)
{
    CRYPT_PROVIDER_DATA* provider = state.ProviderData();
    const std::optional<HashedRoot> root = provider ? FirstHashedRoot(provider) : std::nullopt;
    if (!root || !IsPinnedRoot(root->digest))
        return BinaryTrustResult::NotTrusted;
    return root->otherFaults == 0 ? CheckSignerName(state, signers) : BinaryTrustResult::UnknownError;
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
        return BinaryTrustResult::SignatureInvalid;
    case static_cast<DWORD>(ERROR_FILE_NOT_FOUND):
        return BinaryTrustResult::NotFound;
    default:
        return BinaryTrustResult::UnknownError;
    }
}

} // namespace

BinaryTrustResult VerifyBinaryTrust(const std::wstring& path, std::string_view signers, TrustEvidence* evidence)
{
    if (path.empty())
        return BinaryTrustResult::NotFound;
    TrustState state(path);
    if (!PathFileExistsW(path.c_str()))
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
