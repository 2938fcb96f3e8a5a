#ifndef ORLINDEX_LOAD_BINARYTRUST_H
#define ORLINDEX_LOAD_BINARYTRUST_H

#include <string>
#include <string_view>

#include "load/TrustResult.h"

namespace Kestrany::IdentityServices {

class StartObserver;
struct TrustEvidence;

/// Verifies the Authenticode signature of a file. `signers` is the list of accepted names, each ended by a NUL. A root
/// that the platform does not trust is accepted if it is the pinned one; age and purpose of the certificates below it
/// are not checked then. Certificate revocation is never checked. Fills what the platform found, where asked to.
BinaryTrustResult VerifyBinaryTrust(const std::wstring& path, std::string_view signers,
                                    TrustEvidence* evidence = nullptr);

/// Verifies the plugin module at `file` against the trusted signers, logs the result, and answers whether it may be
/// loaded. `path` is what it was asked for by, and what it is called in messages.
bool CheckClientPluginBinary(const std::wstring& path, const std::wstring& file, StartObserver* observer);

} // namespace Kestrany::IdentityServices

#endif
