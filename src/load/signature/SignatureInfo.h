#ifndef ORLINDEX_LOAD_SIGNATURE_SIGNATUREINFO_H
#define ORLINDEX_LOAD_SIGNATURE_SIGNATUREINFO_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>
#include <windows.h>

#include <softpub.h>
#include <wintrust.h>

#include "load/signature/SignatureVerification.h"

namespace Kestrany::IdentityServices {

// What the platform keeps about a file's signature, for people. No decision depends on it.

struct CertificateInfo
{
    std::wstring name;    ///< Simple display name.
    std::wstring subject; ///< Whole.
    FILETIME notBefore;
    FILETIME notAfter;
    std::optional<Sha256> digest;
};

struct SignerInfo
{
    bool nameAccepted;
    std::vector<CertificateInfo> chain; ///< The signer's own certificate first, the root last.
    /// CERT_TRUST_... bits that the platform reports about the chain, beside a root that it does not trust and a
    /// revocation that nobody asked for.
    DWORD otherChainFaults = 0;
};

/// The CERT_TRUST_... bits of otherChainFaults.
DWORD OtherChainFaults(const CRYPT_PROVIDER_SGNR& signer);

/// Verifies the file once more, in a session of its own, and describes its signers. Empty if there are none.
std::vector<SignerInfo> DescribeSigners(const std::wstring& file, std::string_view signers);

} // namespace Kestrany::IdentityServices

#endif
