#include "session/Token.h"

namespace Kestrany::Agent {

std::string Base64Url(const std::string& bytes)
{
    static constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    std::string text;
    unsigned int pending = 0;
    int pendingBits = 0;
    for (const char byte : bytes)
    {
        pending = (pending << 8 | static_cast<unsigned char>(byte)) & 0xFFFFu;
        pendingBits += 8;
        while (pendingBits >= 6)
        {
            pendingBits -= 6;
            text += alphabet[pending >> pendingBits & 63u];
        }
    }
    if (pendingBits > 0)
        text += alphabet[pending << (6 - pendingBits) & 63u];
    return text;
}

std::string RandomText(const RandomSource& random, std::size_t size)
{
    std::string bytes(size, '\0');
    random(bytes.data(), bytes.size());
    return Base64Url(bytes);
}

} // namespace Kestrany::Agent
