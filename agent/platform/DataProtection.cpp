#include "platform/DataProtection.h"

#include <stdexcept>

#include <windows.h>

#include <dpapi.h>
#include <wincrypt.h>

#include "platform/Base.h"

namespace Kestrany::Agent {

namespace {

constexpr std::string_view TextPurpose = "Kestrany.TALIX.Text";

DATA_BLOB BlobOf(std::string_view bytes)
{
    // The system takes input by pointers to non-const bytes, but does not write to it.
    return {static_cast<DWORD>(bytes.size()), reinterpret_cast<BYTE*>(const_cast<char*>(bytes.data()))};
}

/// Copies memory that the system allocated, clears it, because it may be what was encrypted, and frees it.
std::string Take(const DATA_BLOB& blob)
{
    const LocalMemory<BYTE> owner(blob.pbData);
    std::string bytes(reinterpret_cast<const char*>(blob.pbData), blob.cbData);
    SecureZeroMemory(blob.pbData, blob.cbData);
    return bytes;
}

std::wstring ToBase64(const std::string& bytes)
{
    constexpr DWORD format = CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF;
    const auto* data = reinterpret_cast<const BYTE*>(bytes.data());
    const auto size = static_cast<DWORD>(bytes.size());
    DWORD length = 0;
    if (!CryptBinaryToStringW(data, size, format, nullptr, &length))
        throw std::runtime_error("no base64 text: " + SystemMessage(GetLastError()));
    std::wstring text(length, L'\0');
    if (!CryptBinaryToStringW(data, size, format, text.data(), &length))
        throw std::runtime_error("no base64 text: " + SystemMessage(GetLastError()));
    text.resize(length); // Without the terminating zero.
    return text;
}

std::optional<std::string> FromBase64(std::wstring_view text)
{
    const auto length = static_cast<DWORD>(text.size());
    DWORD size = 0;
    // With a length of 0 the system would search for a terminating zero.
    if (text.empty() ||
        !CryptStringToBinaryW(text.data(), length, CRYPT_STRING_BASE64, nullptr, &size, nullptr, nullptr))
        return std::nullopt;
    std::string bytes(size, '\0');
    if (!CryptStringToBinaryW(text.data(), length, CRYPT_STRING_BASE64, reinterpret_cast<BYTE*>(bytes.data()), &size,
                              nullptr, nullptr))
        return std::nullopt;
    bytes.resize(size);
    return bytes;
}

} // namespace

std::string Protect(std::string_view bytes, std::string_view purpose)
{
    DATA_BLOB input = BlobOf(bytes);
    DATA_BLOB entropy = BlobOf(purpose);
    DATA_BLOB output{};
    if (!CryptProtectData(&input, nullptr, &entropy, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN, &output))
        throw std::runtime_error("the system's data protection failed: " + SystemMessage(GetLastError()));
    return Take(output);
}

std::optional<std::string> Unprotect(std::string_view bytes, std::string_view purpose)
{
    DATA_BLOB input = BlobOf(bytes);
    DATA_BLOB entropy = BlobOf(purpose);
    DATA_BLOB output{};
    if (!CryptUnprotectData(&input, nullptr, &entropy, nullptr, nullptr, CRYPTPROTECT_UI_FORBIDDEN, &output))
        return std::nullopt;
    return Take(output);
}

std::optional<std::wstring> EncryptText(std::wstring_view text)
{
    const std::optional<std::string> narrow = NarrowStrictly(text);
    if (!narrow)
        return std::nullopt;
    return ToBase64(Protect(*narrow, TextPurpose));
}

std::optional<std::wstring> DecryptText(std::wstring_view encrypted)
{
    const std::optional<std::string> bytes = FromBase64(encrypted);
    const std::optional<std::string> narrow = bytes ? Unprotect(*bytes, TextPurpose) : std::nullopt;
    return narrow ? WidenStrictly(*narrow) : std::nullopt;
}

} // namespace Kestrany::Agent
