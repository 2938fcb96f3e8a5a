#include "platform/SigningKey.h"

#include <stdexcept>
#include <utility>

#include "platform/Crypto.h"

namespace Kestrany::Agent {

namespace {

constexpr std::size_t CoordinateSize = 32;

std::string ExportAs(BCRYPT_KEY_HANDLE key, const wchar_t* type)
{
    ULONG size = 0;
    CheckCng(BCryptExportKey(key, nullptr, type, nullptr, 0, &size, 0), "no key size");
    std::string bytes(size, '\0');
    CheckCng(BCryptExportKey(key, nullptr, type, reinterpret_cast<PUCHAR>(bytes.data()), size, &size, 0), "no export");
    bytes.resize(size);
    return bytes;
}

} // namespace

SigningKey::SigningKey(CngKey key) : key_(std::move(key))
{
    const std::string blob = ExportAs(key_.get(), BCRYPT_ECCPUBLIC_BLOB);
    if (blob.size() != sizeof(BCRYPT_ECCKEY_BLOB) + 2 * CoordinateSize)
        throw std::runtime_error("the system's public key has another form");
    x_ = blob.substr(sizeof(BCRYPT_ECCKEY_BLOB), CoordinateSize);
    y_ = blob.substr(sizeof(BCRYPT_ECCKEY_BLOB) + CoordinateSize);
}

SigningKey SigningKey::Generate()
{
    BCRYPT_KEY_HANDLE handle = nullptr;
    CheckCng(BCryptGenerateKeyPair(CngAlgorithm(BCRYPT_ECDSA_P256_ALGORITHM), &handle, 256, 0), "no new key");
    CngKey key(handle);
    CheckCng(BCryptFinalizeKeyPair(handle, 0), "no new key");
    return SigningKey(std::move(key));
}

SigningKey SigningKey::Import(const std::string& bytes)
{
    BCRYPT_KEY_HANDLE handle = nullptr;
    auto* input = reinterpret_cast<PUCHAR>(const_cast<char*>(bytes.data()));
    if (bytes.size() != sizeof(BCRYPT_ECCKEY_BLOB) + 3 * CoordinateSize ||
        BCryptImportKeyPair(CngAlgorithm(BCRYPT_ECDSA_P256_ALGORITHM), nullptr, BCRYPT_ECCPRIVATE_BLOB, &handle, input,
                            static_cast<ULONG>(bytes.size()), 0) < 0)
        throw std::invalid_argument("not a private key on P-256");
    return SigningKey(CngKey(handle));
}

std::string SigningKey::Export() const
{
    return ExportAs(key_.get(), BCRYPT_ECCPRIVATE_BLOB);
}

std::string SigningKey::Sign(const std::string& text) const
{
    std::string digest = Sha256(text);
    std::string signature(2 * CoordinateSize, '\0');
    ULONG size = 0;
    CheckCng(BCryptSignHash(key_.get(), nullptr, reinterpret_cast<PUCHAR>(digest.data()),
                            static_cast<ULONG>(digest.size()), reinterpret_cast<PUCHAR>(signature.data()),
                            static_cast<ULONG>(signature.size()), &size, 0),
             "no signature");
    if (size != signature.size())
        throw std::runtime_error("the system's signature has another form");
    return signature;
}

} // namespace Kestrany::Agent
