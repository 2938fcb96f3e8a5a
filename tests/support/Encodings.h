#ifndef ORLINDEX_SUPPORT_ENCODINGS_H
#define ORLINDEX_SUPPORT_ENCODINGS_H

#include <cstddef>
#include <string>
#include <string_view>

namespace OrlindexTest {

// UTF-8 and UTF-16 by their definitions, without the platform. A wide character is a unit of UTF-16, whatever its size.

inline constexpr char32_t Replacement = 0xFFFD;

inline std::wstring ToUtf16(const std::u32string& codePoints)
{
    std::wstring text;
    for (const char32_t codePoint : codePoints)
    {
        if (codePoint >= 0x10000)
            text +=
                {static_cast<wchar_t>(0xD7C0 + (codePoint >> 10)), static_cast<wchar_t>(0xDC00 | (codePoint & 0x3FF))};
        else
            text += static_cast<wchar_t>(codePoint);
    }
    return text;
}

inline std::string ToUtf8(const std::u32string& codePoints)
{
    const auto tail = [](char32_t bits) { return static_cast<char>(0x80 | (bits & 0x3F)); };
    std::string text;
    for (const char32_t c : codePoints)
    {
        if (c < 0x80)
            text += static_cast<char>(c);
        else if (c < 0x800)
            text += {static_cast<char>(0xC0 | c >> 6), tail(c)};
        else if (c < 0x10000)
            text += {static_cast<char>(0xE0 | c >> 12), tail(c >> 6), tail(c)};
        else
            text += {static_cast<char>(0xF0 | c >> 18), tail(c >> 12), tail(c >> 6), tail(c)};
    }
    return text;
}

/// A lone surrogate becomes the replacement character.
inline std::u32string FromUtf16(std::wstring_view text)
{
    const auto isIn = [&](std::size_t at, wchar_t first) { return at < text.size() && (text[at] & 0xFC00) == first; };
    std::u32string codePoints;
    for (std::size_t at = 0; at < text.size(); ++at)
    {
        if (isIn(at, 0xD800) && isIn(at + 1, 0xDC00))
        {
            const auto bits = [&](std::size_t unit) { return static_cast<char32_t>(text[unit]) & 0x3FF; };
            codePoints += static_cast<char32_t>(0x10000 + (bits(at) << 10) + bits(at + 1));
            ++at;
        }
        else
            codePoints += isIn(at, 0xD800) || isIn(at, 0xDC00) ? Replacement : static_cast<char32_t>(text[at]);
    }
    return codePoints;
}

/// The number of bytes of the well-formed sequence at the start of the text; 0 if there is none.
inline std::size_t WellFormedLength(std::string_view text)
{
    const auto byte = [&](std::size_t at) { return at < text.size() ? static_cast<unsigned char>(text[at]) : 0u; };
    const auto tail = [&](std::size_t at) { return (byte(at) & 0xC0) == 0x80; };
    const unsigned first = byte(0);
    if (first < 0x80)
        return text.empty() ? 0 : 1;
    if (first >= 0xC2 && first <= 0xDF)
        return tail(1) ? 2 : 0;
    const unsigned second = byte(1);
    if (first >= 0xE0 && first <= 0xEF)
        return tail(1) && tail(2) && (first != 0xE0 || second >= 0xA0) && (first != 0xED || second < 0xA0) ? 3 : 0;
    if (first >= 0xF0 && first <= 0xF4)
        return tail(1) && tail(2) && tail(3) && (first != 0xF0 || second >= 0x90) && (first != 0xF4 || second < 0x90)
                   ? 4
                   : 0;
    return 0;
}

/// The code point of a well-formed sequence.
inline char32_t DecodeSequence(std::string_view sequence)
{
    static constexpr unsigned char firstBits[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    char32_t codePoint = static_cast<unsigned char>(sequence[0]) & firstBits[sequence.size()];
    for (const char tail : sequence.substr(1))
        codePoint = codePoint << 6 | (static_cast<unsigned char>(tail) & 0x3Fu);
    return codePoint;
}

/// Each byte outside a well-formed sequence becomes the replacement character.
inline std::u32string FromUtf8(std::string_view text)
{
    std::u32string codePoints;
    while (!text.empty())
    {
        const std::size_t length = WellFormedLength(text);
        codePoints += length > 0 ? DecodeSequence(text.substr(0, length)) : Replacement;
        text.remove_prefix(length > 0 ? length : 1);
    }
    return codePoints;
}

} // namespace OrlindexTest

#endif
