#include "platform/Cng.h"

#include <map>
#include <mutex>
#include <stdexcept>

namespace Kestrany::Agent {

namespace {

std::size_t DigestSize(BCRYPT_ALG_HANDLE algorithm)
{
    DWORD size = 0;
    ULONG written = 0;
    CheckCng(
        BCryptGetProperty(algorithm, BCRYPT_HASH_LENGTH, reinterpret_cast<PUCHAR>(&size), sizeof size, &written, 0),
        "no digest size");
    return size;
}

} // namespace

void CheckCng(NTSTATUS status, const char* what)
{
    if (status < 0)
        throw std::runtime_error(std::string("the system's cryptography failed: ") + what);
}

BCRYPT_ALG_HANDLE CngAlgorithm(const wchar_t* name)
{
    static std::mutex mutex;
    // Never destroyed: other threads may use it while the process ends.
    static auto* const algorithms = new std::map<std::wstring, BCRYPT_ALG_HANDLE>;
    const std::lock_guard lock(mutex);
    BCRYPT_ALG_HANDLE& handle = (*algorithms)[name];
    if (handle == nullptr)
        CheckCng(BCryptOpenAlgorithmProvider(&handle, name, nullptr, 0), "no such algorithm");
    return handle;
}

std::string CngDigest(const wchar_t* algorithm, std::string_view bytes)
{
    BCRYPT_ALG_HANDLE handle = CngAlgorithm(algorithm);
    std::string digest(DigestSize(handle), '\0');
    CheckCng(BCryptHash(handle, nullptr, 0, CngInput(bytes), static_cast<ULONG>(bytes.size()),
                        reinterpret_cast<PUCHAR>(digest.data()), static_cast<ULONG>(digest.size())),
             "no digest");
    return digest;
}

PUCHAR CngInput(std::string_view bytes)
{
    return reinterpret_cast<PUCHAR>(const_cast<char*>(bytes.data()));
}

} // namespace Kestrany::Agent
