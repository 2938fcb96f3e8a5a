#ifndef ORLINDEX_LOAD_SIGNATURE_SIGNATUREVERIFICATION_H
#define ORLINDEX_LOAD_SIGNATURE_SIGNATUREVERIFICATION_H

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <windows.h>

#include <wincrypt.h>

#include "load/signature/BinaryTrustResult.h"

namespace Kestrany::IdentityServices {

/// What a verification found.
struct SignatureVerification
{
    BinaryTrustResult result = BinaryTrustResult::UnknownError;
    std::optional<LONG> platformResult; ///< Of WinVerifyTrust; nullopt if it was not asked.
};

/// Verifies the Authenticode signature of a file. `signers` is the list of accepted names, each ended by a NUL. A root
/// that the platform does not trust is accepted if it is the pinned one; age and purpose of the certificates below it
/// are not checked then. Certificate revocation is never checked.
SignatureVerification VerifyBinaryTrust(const std::wstring& path, std::string_view signers);

/// The accepted names that this build trusts.
std::string_view TrustedSigners();

/// Verifies the plugin module at `file` against the trusted signers and logs the result. `path` is how it was
/// configured, and what messages name.
SignatureVerification CheckClientPluginBinary(const std::wstring& path, const std::wstring& file);

/// Whether the certificate's simple display name is on the list, byte for byte, and its wide form the same characters.
/// Each name on the list is ended by a NUL; text after the last NUL does not count.
bool SignerNameMatches(PCCERT_CONTEXT certificate, std::string_view signers);

using Sha256 = std::array<BYTE, 32>;

/// The digest of a certificate's DER form; nullopt if the platform cannot compute one.
std::optional<Sha256> CertificateDigest(PCCERT_CONTEXT certificate);

bool IsPinnedRoot(const Sha256& digest);

} // namespace Kestrany::IdentityServices

#endif
