#include "identity/openid/windows/CngSignatures.h"

#include <stdexcept>

#include "platform/Cng.h"

namespace Kestrany::Agent::OpenId {

namespace {

using Type = PublicKey::Type;

const wchar_t* NameOf(HashAlgorithm hash)
{
    switch (hash)
    {
    case HashAlgorithm::Sha256:
        return BCRYPT_SHA256_ALGORITHM;
    case HashAlgorithm::Sha384:
        return BCRYPT_SHA384_ALGORITHM;
    case HashAlgorithm::Sha512:
        break;
    }
    return BCRYPT_SHA512_ALGORITHM;
}

std::size_t CoordinateSize(const PublicKey& key)
{
    return key.type == Type::P256 ? 32 : 48;
}

template <class Header>
std::string BytesOf(const Header& header)
{
    return std::string(reinterpret_cast<const char*>(&header), sizeof header);
}

std::string RsaBlob(const PublicKey& key)
{
    BCRYPT_RSAKEY_BLOB header{};
    header.Magic = BCRYPT_RSAPUBLIC_MAGIC;
    header.BitLength = static_cast<ULONG>(key.modulus.size() * 8);
    header.cbPublicExp = static_cast<ULONG>(key.exponent.size());
    header.cbModulus = static_cast<ULONG>(key.modulus.size());
    return BytesOf(header) + key.exponent + key.modulus;
}

std::string CurveBlob(const PublicKey& key)
{
    BCRYPT_ECCKEY_BLOB header{};
    header.dwMagic = key.type == Type::P256 ? BCRYPT_ECDSA_PUBLIC_P256_MAGIC : BCRYPT_ECDSA_PUBLIC_P384_MAGIC;
    header.cbKey = static_cast<ULONG>(CoordinateSize(key));
    return BytesOf(header) + key.x + key.y;
}

/// Null for a key that the system refuses, such as a point that is not on the curve.
CngKey Import(const PublicKey& key)
{
    const bool isRsa = key.type == Type::Rsa;
    const wchar_t* const curve = key.type == Type::P256 ? BCRYPT_ECDSA_P256_ALGORITHM : BCRYPT_ECDSA_P384_ALGORITHM;
    const std::string blob = isRsa ? RsaBlob(key) : CurveBlob(key);
    BCRYPT_KEY_HANDLE handle = nullptr;
    if (BCryptImportKeyPair(CngAlgorithm(isRsa ? BCRYPT_RSA_ALGORITHM : curve), nullptr,
                            isRsa ? BCRYPT_RSAPUBLIC_BLOB : BCRYPT_ECCPUBLIC_BLOB, &handle, CngInput(blob),
                            static_cast<ULONG>(blob.size()), 0) < 0)
        return nullptr;
    return CngKey(handle);
}

bool IsSignature(const CngKey& key, SignatureScheme scheme, HashAlgorithm hash, std::string_view digest,
                 std::string_view signature)
{
    BCRYPT_PKCS1_PADDING_INFO pkcs1{NameOf(hash)};
    BCRYPT_PSS_PADDING_INFO pss{NameOf(hash), static_cast<ULONG>(digest.size())};
    void* padding = nullptr;
    ULONG flags = 0;
    if (scheme == SignatureScheme::RsaPkcs1)
    {
        padding = &pkcs1;
        flags = BCRYPT_PAD_PKCS1;
    }
    else if (scheme == SignatureScheme::RsaPss)
    {
        padding = &pss;
        flags = BCRYPT_PAD_PSS;
    }
    return BCryptVerifySignature(key.get(), padding, CngInput(digest), static_cast<ULONG>(digest.size()),
                                 CngInput(signature), static_cast<ULONG>(signature.size()), flags) >= 0;
}

} // namespace

std::string CngSignatures::Digest(HashAlgorithm algorithm, std::string_view bytes)
{
    return CngDigest(NameOf(algorithm), bytes);
}

bool CngSignatures::Verify(const PublicKey& key, SignatureScheme scheme, HashAlgorithm hash, std::string_view text,
                           std::string_view signature)
{
    const bool isRsa = key.type == Type::Rsa;
    const std::size_t size = isRsa ? key.modulus.size() : 2 * CoordinateSize(key);
    // The system's own check of the length differs between its versions.
    if (isRsa == (scheme == SignatureScheme::Ecdsa) || signature.size() != size)
        return false;
    if (!isRsa && (key.x.size() != CoordinateSize(key) || key.y.size() != CoordinateSize(key)))
        return false;
    try
    {
        const CngKey imported = Import(key);
        return imported && IsSignature(imported, scheme, hash, Digest(hash, text), signature);
    }
    catch (const std::runtime_error&)
    {
        return false; // Without the algorithm nothing can be verified.
    }
}

} // namespace Kestrany::Agent::OpenId
