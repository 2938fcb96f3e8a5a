#ifndef ORLINDEX_LOAD_SIGNATURE_BINARYTRUSTRESULT_H
#define ORLINDEX_LOAD_SIGNATURE_BINARYTRUSTRESULT_H

#include <cstdint>

#include "base/LogLevel.h"

namespace Kestrany::IdentityServices {

/// Result of verifying a file's signature. SignatureInvalid and SignatureMissing look exchanged and are required as
/// they are: names, numbers and messages are fixed.
enum class BinaryTrustResult : std::int32_t
{
    Valid = 0,                 ///< Signed, trusted, and by an accepted name.
    UnknownError = 1,          ///< Any result of the platform that has no row of its own.
    NotFound = 2,              ///< No path, or no file.
    SignatureInvalid = 3,      ///< The platform found no signature.
    SignatureMissing = 4,      ///< The platform reported success, but kept nothing about the signature.
    NotTrusted = 5,            ///< Distrusted, no signer with an accepted name, or an unknown root.
    ChainNotBuilt = 6,         ///< Has a message, and is never a result of VerifyBinaryTrust.
    VerificationDisabled = 100 ///< Has a message, and is never a result: nothing turns the verification off.
};

/// How the log reports a result.
struct TrustMessage
{
    BinaryTrustResult result;
    const wchar_t* text; ///< %1% is the file.
    TALIXLog::LogLevel level;
};

/// A result without a row of its own reads as UnknownError.
const TrustMessage& TrustMessageFor(BinaryTrustResult result);

/// Whether a file with this result may be loaded.
bool LoadingAllowed(BinaryTrustResult result);

} // namespace Kestrany::IdentityServices

#endif
