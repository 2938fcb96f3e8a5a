#ifndef AGENT_PLATFORM_RANDOM_H
#define AGENT_PLATFORM_RANDOM_H

#include <cstddef>

namespace Kestrany::Agent {

/// Fills `bytes` from the system's generator. Throws std::runtime_error when it fails.
void SystemRandom(void* bytes, std::size_t size);

} // namespace Kestrany::Agent

#endif
