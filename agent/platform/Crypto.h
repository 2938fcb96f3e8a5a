#ifndef AGENT_PLATFORM_CRYPTO_H
#define AGENT_PLATFORM_CRYPTO_H

#include <cstddef>
#include <string>

namespace Kestrany::Agent {

/// Returns the SHA-256 digest of the bytes: 32 bytes. Throws std::runtime_error on failure.
std::string Sha256(const std::string& bytes);

/// Fills `bytes` from the system's random generator. Throws std::runtime_error on failure.
void SystemRandom(void* bytes, std::size_t size);

} // namespace Kestrany::Agent

#endif
