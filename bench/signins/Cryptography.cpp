#include "signins/Cryptography.h"

#include <windows.h>

#include <bcrypt.h>

#include "signins/Require.h"

namespace OrlindexBench {

namespace {

constexpr std::string_view Letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

PUCHAR Input(std::string_view bytes)
{
    return reinterpret_cast<PUCHAR>(const_cast<char*>(bytes.data()));
}

ULONG SizeOf(std::string_view bytes)
{
    return static_cast<ULONG>(bytes.size());
}

/// Opened once, and never closed.
BCRYPT_ALG_HANDLE Open(const wchar_t* name)
{
    BCRYPT_ALG_HANDLE handle = nullptr;
    Require(BCryptOpenAlgorithmProvider(&handle, name, nullptr, 0) >= 0, "no such algorithm");
    return handle;
}

} // namespace

std::string RandomBytes(std::size_t count)
{
    std::string bytes(count, '\0');
    Require(BCryptGenRandom(nullptr, Input(bytes), SizeOf(bytes), BCRYPT_USE_SYSTEM_PREFERRED_RNG) >= 0,
            "no random bytes");
    return bytes;
}

std::string Sha256(std::string_view bytes)
{
    static BCRYPT_ALG_HANDLE const algorithm = Open(BCRYPT_SHA256_ALGORITHM);
    std::string digest(32, '\0');
    Require(BCryptHash(algorithm, nullptr, 0, Input(bytes), SizeOf(bytes), Input(digest), SizeOf(digest)) >= 0,
            "no digest");
    return digest;
}

std::string ToBase64Url(std::string_view bytes)
{
    std::string text;
    unsigned int bits = 0;
    int count = 0;
    for (const char each : bytes)
    {
        bits = bits << 8 | static_cast<unsigned char>(each);
        for (count += 8; count >= 6; count -= 6)
            text += Letters[bits >> (count - 6) & 63];
    }
    if (count > 0)
        text += Letters[bits << (6 - count) & 63];
    return text;
}

std::string FromBase64Url(std::string_view text)
{
    std::string bytes;
    unsigned int bits = 0;
    int count = 0;
    for (const char each : text)
    {
        const std::size_t value = Letters.find(each);
        Require(value != std::string_view::npos, "a text is not base64url");
        bits = bits << 6 | static_cast<unsigned int>(value);
        count += 6;
        if (count >= 8)
        {
            count -= 8;
            bytes += static_cast<char>(bits >> count & 255);
        }
    }
    return bytes;
}

bool IsSignature(std::string_view modulus, std::string_view exponent, std::string_view text, std::string_view signature)
{
    static BCRYPT_ALG_HANDLE const algorithm = Open(BCRYPT_RSA_ALGORITHM);
    BCRYPT_RSAKEY_BLOB header{};
    header.Magic = BCRYPT_RSAPUBLIC_MAGIC;
    header.BitLength = SizeOf(modulus) * 8;
    header.cbPublicExp = SizeOf(exponent);
    header.cbModulus = SizeOf(modulus);
    std::string blob(reinterpret_cast<const char*>(&header), sizeof header);
    blob.append(exponent).append(modulus);
    BCRYPT_KEY_HANDLE key = nullptr;
    Require(BCryptImportKeyPair(algorithm, nullptr, BCRYPT_RSAPUBLIC_BLOB, &key, Input(blob), SizeOf(blob), 0) >= 0,
            "the key is refused");
    const std::string digest = Sha256(text);
    BCRYPT_PKCS1_PADDING_INFO padding{BCRYPT_SHA256_ALGORITHM};
    const bool isGood = BCryptVerifySignature(key, &padding, Input(digest), SizeOf(digest), Input(signature),
                                              SizeOf(signature), BCRYPT_PAD_PKCS1) >= 0;
    BCryptDestroyKey(key);
    return isGood;
}

} // namespace OrlindexBench
