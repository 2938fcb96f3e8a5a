#ifndef AGENT_IDENTITY_SIMULATED_KEYSTORE_H
#define AGENT_IDENTITY_SIMULATED_KEYSTORE_H

#include "identity/simulated/Token.h"
#include "platform/LogFile.h"

namespace Kestrany::Agent::Simulated {

/// Opens the user's signing key. The first call creates it, in a file that only the user can read on this machine. The
/// public key is published as a JSON Web Key Set, the file simulator-jwks.json beside it. Throws std::runtime_error if
/// there is a key that cannot be read, and if none can be created.
TokenSigner OpenSigningKey(const LogSink& log);

} // namespace Kestrany::Agent::Simulated

#endif
