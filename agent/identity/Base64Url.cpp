#include "identity/Base64Url.h"

namespace Kestrany::Agent {

namespace {

constexpr std::string_view Alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

} // namespace

std::string Base64Url(std::string_view bytes)
{
    std::string text;
    text.reserve((bytes.size() * 4 + 2) / 3); // Never grows: no copy of a secret is left behind.
    unsigned int pending = 0;
    int pendingBits = 0;
    for (const char byte : bytes)
    {
        pending = (pending << 8 | static_cast<unsigned char>(byte)) & 0xFFFFu;
        pendingBits += 8;
        while (pendingBits >= 6)
        {
            pendingBits -= 6;
            text += Alphabet[pending >> pendingBits & 63u];
        }
    }
    if (pendingBits > 0)
        text += Alphabet[pending << (6 - pendingBits) & 63u];
    return text;
}

std::optional<std::string> FromBase64Url(std::string_view text)
{
    std::string bytes;
    bytes.reserve(text.size() * 3 / 4);
    unsigned int pending = 0;
    int pendingBits = 0;
    for (const char letter : text)
    {
        const std::size_t value = Alphabet.find(letter);
        if (value == std::string_view::npos)
            return std::nullopt;
        pending = (pending << 6 | static_cast<unsigned int>(value)) & 0x3FFFu;
        pendingBits += 6;
        if (pendingBits >= 8)
        {
            pendingBits -= 8;
            bytes += static_cast<char>(pending >> pendingBits & 0xFFu);
        }
    }
    const bool hasLostLetter = text.size() % 4 == 1;
    const bool hasLostBits = (pending & ((1u << pendingBits) - 1u)) != 0;
    if (hasLostLetter || hasLostBits)
        return std::nullopt;
    return bytes;
}

std::string RandomText(const RandomSource& random, std::size_t size)
{
    std::string bytes(size, '\0');
    random(bytes.data(), bytes.size());
    return Base64Url(bytes);
}

} // namespace Kestrany::Agent
