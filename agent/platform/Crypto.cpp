#include "platform/Crypto.h"

#include <stdexcept>

#include <windows.h>

#include <bcrypt.h>

namespace Kestrany::Agent {

namespace {

struct AlgorithmCloser
{
    BCRYPT_ALG_HANDLE handle = nullptr;
    ~AlgorithmCloser()
    {
        if (handle != nullptr)
            BCryptCloseAlgorithmProvider(handle, 0);
    }
};

} // namespace

std::string Sha256(const std::string& bytes)
{
    std::string digest(32, '\0');
    AlgorithmCloser algorithm;
    // The system takes input by pointers to non-const bytes, but does not write to it.
    auto* input = reinterpret_cast<PUCHAR>(const_cast<char*>(bytes.data()));
    if (BCryptOpenAlgorithmProvider(&algorithm.handle, BCRYPT_SHA256_ALGORITHM, nullptr, 0) < 0 ||
        BCryptHash(algorithm.handle, nullptr, 0, input, static_cast<ULONG>(bytes.size()),
                   reinterpret_cast<PUCHAR>(digest.data()), static_cast<ULONG>(digest.size())) < 0)
        throw std::runtime_error("the system's SHA-256 failed");
    return digest;
}

void SystemRandom(void* bytes, std::size_t size)
{
    const NTSTATUS status =
        BCryptGenRandom(nullptr, static_cast<PUCHAR>(bytes), static_cast<ULONG>(size), BCRYPT_USE_SYSTEM_PREFERRED_RNG);
    if (status < 0)
        throw std::runtime_error("the system's random generator failed");
}

} // namespace Kestrany::Agent
