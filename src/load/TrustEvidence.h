#ifndef ORLINDEX_LOAD_TRUSTEVIDENCE_H
#define ORLINDEX_LOAD_TRUSTEVIDENCE_H

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>
#include <windows.h>

#include <wincrypt.h>

#include "load/TrustResult.h"

namespace Kestrany::IdentityServices {

class TrustState;

using Sha256 = std::array<BYTE, 32>;

/// The digest of a certificate's DER form; nothing where the platform cannot compute one.
std::optional<Sha256> CertificateDigest(PCCERT_CONTEXT certificate);

bool IsPinnedRoot(const Sha256& digest);

struct CertificateEvidence
{
    std::wstring name;    ///< Simple display name.
    std::wstring subject; ///< Whole.
    FILETIME notBefore;
    FILETIME notAfter;
    std::optional<Sha256> digest;
};

struct SignerEvidence
{
    bool nameAccepted;
    std::vector<CertificateEvidence> chain; ///< The signer's own certificate first, the root last.
    DWORD otherChainFaults = 0;             ///< CERT_TRUST_..., beside the root's. No check depends on them.
};

/// What there was to judge a signature by, and the judgement.
struct TrustEvidence
{
    std::wstring path;
    std::optional<LONG> platformAnswer; ///< Nothing where the platform was not asked.
    BinaryTrustResult result = BinaryTrustResult::UnknownError;
    std::vector<SignerEvidence> signers;
};

std::vector<SignerEvidence> CollectSigners(const TrustState& state, std::string_view signers);

} // namespace Kestrany::IdentityServices

#endif
