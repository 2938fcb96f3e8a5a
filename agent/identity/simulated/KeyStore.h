#ifndef AGENT_IDENTITY_SIMULATED_KEYSTORE_H
#define AGENT_IDENTITY_SIMULATED_KEYSTORE_H

#include "identity/simulated/Token.h"
#include "platform/LogFile.h"

namespace Kestrany::Agent::Simulated {

/// The user's signing key, made at the first time and kept in a file that only the user can read on this machine. Its
/// public key is published as a JSON Web Key Set, the file simulator-jwks.json beside it. Throws std::runtime_error
/// when there is one that cannot be read, and when none can be made.
TokenSigner OpenSigningKey(const LogSink& log);

} // namespace Kestrany::Agent::Simulated

#endif
