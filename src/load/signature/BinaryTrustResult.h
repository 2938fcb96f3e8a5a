#ifndef ORLINDEX_LOAD_SIGNATURE_BINARYTRUSTRESULT_H
#define ORLINDEX_LOAD_SIGNATURE_BINARYTRUSTRESULT_H

#include <cstdint>

#include "base/LogLevel.h"

namespace Kestrany::IdentityServices {

/// Result of verifying a file's signature. SignatureInvalid and SignatureMissing look swapped, but are required as they
/// are: names, numbers and messages are fixed.
enum class BinaryTrustResult : std::int32_t
{
    Valid = 0,                 ///< Signed by an accepted signer, and trusted.
    UnknownError = 1,          ///< Any result of the platform that is not mapped to another value.
    NotFound = 2,              ///< No path, or no file.
    SignatureInvalid = 3,      ///< The platform found no signature.
    SignatureMissing = 4,      ///< The platform reported success, but has no data about the signature.
    NotTrusted = 5,            ///< Distrusted, no signer with an accepted name, or an unknown root.
    ChainNotBuilt = 6,         ///< Has a message, and is never a result of VerifyBinaryTrust.
    VerificationDisabled = 100 ///< Has a message, and is never a result: nothing turns the verification off.
};

/// The log message for a result.
struct TrustMessage
{
    BinaryTrustResult result;
    const wchar_t* text; ///< %1% is the file.
    TALIXLog::LogLevel level;
};

/// Returns UnknownError's message for a result without its own message.
const TrustMessage& TrustMessageFor(BinaryTrustResult result);

/// Whether a file with this result may be loaded.
bool LoadingAllowed(BinaryTrustResult result);

} // namespace Kestrany::IdentityServices

#endif
