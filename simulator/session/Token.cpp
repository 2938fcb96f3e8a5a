#include "session/Token.h"

#include <vector>

namespace Kestrany::Simulator {

std::string RandomText(const RandomSource& random, std::size_t size)
{
    static constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

    std::vector<unsigned char> bytes(size);
    random(bytes.data(), bytes.size());

    std::string text;
    unsigned int pending = 0;
    int pendingBits = 0;
    for (const unsigned char byte : bytes)
    {
        pending = (pending << 8 | byte) & 0xFFFFu;
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

} // namespace Kestrany::Simulator
