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

// The platform's data about a file's signature, for people. No trust decision uses it.

struct CertificateInfo
{
    std::wstring name;    ///< Simple display name.
    std::wstring subject; ///< Full distinguished name.
    FILETIME notBefore;
    FILETIME notAfter;
    std::optional<Sha256> digest;
};

struct SignerInfo
{
    bool nameAccepted;
    std::vector<CertificateInfo> chain; ///< The signer's own certificate first, the root last.
    /// CERT_TRUST_... bits that the platform reports about the chain, without those for an untrusted root and for
    /// revocation, which is not checked.
    DWORD otherChainFaults = 0;
};

/// The CERT_TRUST_... bits of otherChainFaults.
DWORD OtherChainFaults(const CRYPT_PROVIDER_SGNR& signer);

/// Verifies the file again, in its own session, and describes its signers. Empty if there are none.
std::vector<SignerInfo> DescribeSigners(const std::wstring& file, std::string_view signers);

} // namespace Kestrany::IdentityServices

#endif
