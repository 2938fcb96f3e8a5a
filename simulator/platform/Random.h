#ifndef SIMULATOR_PLATFORM_RANDOM_H
#define SIMULATOR_PLATFORM_RANDOM_H

#include <cstddef>

namespace Kestrany::Simulator {

/// Fills `bytes` from the system's generator. Throws std::runtime_error when it fails.
void SystemRandom(void* bytes, std::size_t size);

} // namespace Kestrany::Simulator

#endif
