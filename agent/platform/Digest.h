#ifndef AGENT_PLATFORM_DIGEST_H
#define AGENT_PLATFORM_DIGEST_H

#include <string>

namespace Kestrany::Agent {

/// SHA-256 of the bytes: 32 bytes. Throws std::runtime_error when the system refuses.
std::string Sha256(const std::string& bytes);

} // namespace Kestrany::Agent

#endif
