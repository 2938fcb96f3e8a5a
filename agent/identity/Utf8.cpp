#include "identity/Utf8.h"

#include <algorithm>

namespace Kestrany::Agent {

namespace {

/// One row of the table of well-formed byte sequences: the first byte, the range of the second, and the size.
struct Sequence
{
    unsigned char first;
    unsigned char last;
    unsigned char secondFirst;
    unsigned char secondLast;
    std::size_t size;
};

constexpr Sequence Sequences[] = {
    {0x00, 0x7F, 0x00, 0x00, 1}, {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
    {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
};

bool IsContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

bool Begins(std::string_view text, const Sequence& sequence)
{
    const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    if (byte(0) < sequence.first || byte(0) > sequence.last || text.size() < sequence.size)
        return false;
    if (sequence.size > 1 && (byte(1) < sequence.secondFirst || byte(1) > sequence.secondLast))
        return false;
    return sequence.size <= 2 || std::all_of(text.begin() + 2, text.begin() + sequence.size, IsContinuation);
}

} // namespace

std::size_t WellFormedSize(std::string_view text)
{
    std::size_t size = 0;
    while (size < text.size())
    {
        const std::string_view rest = text.substr(size);
        const auto* const end = std::end(Sequences);
        const auto* const found =
            std::find_if(std::begin(Sequences), end, [&](const Sequence& sequence) { return Begins(rest, sequence); });
        if (found == end)
            break;
        size += found->size;
    }
    return size;
}

std::size_t CharacterCount(std::string_view text)
{
    return text.size() - static_cast<std::size_t>(std::count_if(text.begin(), text.end(), IsContinuation));
}

} // namespace Kestrany::Agent
