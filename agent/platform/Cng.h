#ifndef AGENT_PLATFORM_CNG_H
#define AGENT_PLATFORM_CNG_H

#include <memory>
#include <string>
#include <string_view>

#include <windows.h>

#include <bcrypt.h>

namespace Kestrany::Agent {

// The system's cryptography.

struct CngKeyCloser
{
    void operator()(void* key) const { BCryptDestroyKey(key); }
};
/// A key of the system's cryptography.
using CngKey = std::unique_ptr<void, CngKeyCloser>;

/// Throws std::runtime_error for a status that is a failure; `what` says what failed.
void CheckCng(NTSTATUS status, const char* what);

/// An algorithm such as BCRYPT_SHA256_ALGORITHM. It is opened once per process, because opening takes longer than most
/// operations, and never closed. Any thread may call. Throws std::runtime_error if the system does not have it.
BCRYPT_ALG_HANDLE CngAlgorithm(const wchar_t* name);

/// The digest of the bytes. Throws std::runtime_error on failure.
std::string CngDigest(const wchar_t* algorithm, std::string_view bytes);

/// A pointer as the system takes input: to bytes that are not const, which it does not write to.
PUCHAR CngInput(std::string_view bytes);

} // namespace Kestrany::Agent

#endif
