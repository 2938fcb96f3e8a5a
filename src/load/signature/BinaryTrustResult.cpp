#include "load/signature/BinaryTrustResult.h"

#include <algorithm>
#include <iterator>

namespace Kestrany::IdentityServices {
namespace {

const TrustMessage unknownError = {BinaryTrustResult::UnknownError, L"Binary file: unknown error: %1%",
                                   TALIXLog::Error};

const TrustMessage messages[] = {
    {BinaryTrustResult::Valid, L"Binary file: is valid: %1%", TALIXLog::Info},
    unknownError,
    {BinaryTrustResult::NotFound, L"Binary file: not found: %1%", TALIXLog::Error},
    {BinaryTrustResult::SignatureInvalid, L"Binary file: signature is invalid: %1%", TALIXLog::Error},
    {BinaryTrustResult::SignatureMissing, L"Binary file: signature is missing: %1%", TALIXLog::Error},
    {BinaryTrustResult::NotTrusted, L"Binary file: signature certificate not trusted: %1%", TALIXLog::Error},
    {BinaryTrustResult::ChainNotBuilt, L"Binary file: Certificate chain information could not be built: %1%",
     TALIXLog::Info},
    {BinaryTrustResult::VerificationDisabled, L"Binary file: Trust verification is disabled: %1%", TALIXLog::Info},
};

} // namespace

const TrustMessage& TrustMessageFor(BinaryTrustResult result)
{
    const auto* const row = std::find_if(std::begin(messages), std::end(messages),
                                         [result](const TrustMessage& message) { return message.result == result; });
    return row == std::end(messages) ? unknownError : *row;
}

bool LoadingAllowed(BinaryTrustResult result)
{
    // VerificationDisabled is part of the mapping, on purpose, and no verification ever returns it.
    return result == BinaryTrustResult::Valid || result == BinaryTrustResult::VerificationDisabled;
}

} // namespace Kestrany::IdentityServices
