#include "platform/Crypto.h"

#include <stdexcept>

#include "platform/Cng.h"

namespace Kestrany::Agent {

std::string Sha256(const std::string& bytes)
{
    return CngDigest(BCRYPT_SHA256_ALGORITHM, bytes);
}

void SystemRandom(void* bytes, std::size_t size)
{
    const NTSTATUS status =
        BCryptGenRandom(nullptr, static_cast<PUCHAR>(bytes), static_cast<ULONG>(size), BCRYPT_USE_SYSTEM_PREFERRED_RNG);
    if (status < 0)
        throw std::runtime_error("the system's random generator failed");
}

} // namespace Kestrany::Agent
