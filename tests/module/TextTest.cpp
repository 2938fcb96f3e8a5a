// Texts of any bytes and any units, compared with conversions by the test itself. Each text ends at a guard page.

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

#include "base/Text.h"
#include "library/GuardedBuffer.h"
#include "support/Count.h"
#include "support/Encodings.h"

namespace OrlindexTest {

using Kestrany::IdentityServices::Narrow;
using Kestrany::IdentityServices::Widen;

namespace {

constexpr unsigned Seed = 20240611;
constexpr int Rounds = 20000;
constexpr std::size_t LongestText = 24;

/// A text at the very end of readable memory.
template <class Character>
class TextAtTheEdge
{
public:
    std::basic_string_view<Character> Place(const std::basic_string<Character>& text)
    {
        char* begin = buffer_.Data() + buffer_.Size() - text.size() * sizeof(Character);
        std::copy(text.begin(), text.end(), reinterpret_cast<Character*>(begin));
        return {reinterpret_cast<const Character*>(begin), text.size()};
    }

private:
    GuardedBuffer buffer_{LongestText * sizeof(Character)};
};

class Random
{
public:
    std::size_t Below(std::size_t limit) { return std::uniform_int_distribution<std::size_t>(0, limit - 1)(engine_); }

    /// Mostly close to the code points at which the length of the encoding changes.
    char32_t CodePoint()
    {
        static constexpr char32_t edges[] = {0,      1,      0x7F,    0x80,    0x7FF,    0x800,    0xD7FF, 0xE000,
                                             0xFFFD, 0xFFFF, 0x10000, 0x103FF, 0x10FC00, 0x10FFFF, 0x4E2D, 0xFEFF};
        if (Below(2) == 0)
            return edges[Below(std::size(edges))];
        const auto any = static_cast<char32_t>(Below(0x110000));
        return any >= 0xD800 && any <= 0xDFFF ? 'x' : any;
    }

    std::u32string CodePoints(std::size_t most)
    {
        std::u32string text(Below(most + 1), 0);
        std::generate(text.begin(), text.end(), [this] { return CodePoint(); });
        return text;
    }

private:
    std::mt19937 engine_{Seed};
};

/// The well-formed parts, in UTF-16. The rest is omitted, as platforms differ in the number of replacement characters.
std::wstring WellFormedParts(const std::string& text)
{
    std::wstring parts;
    for (std::size_t at = 0; at < text.size();)
    {
        const std::size_t length = WellFormedLength(std::string_view(text).substr(at));
        if (length > 0)
            parts += Widen(text.substr(at, length));
        at += (std::max)(length, std::size_t{1});
    }
    return parts;
}

std::wstring WithoutReplacements(std::wstring text)
{
    text.erase(std::remove(text.begin(), text.end(), static_cast<wchar_t>(Replacement)), text.end());
    return text;
}

} // namespace

TEST(TextConversion, OfWellFormedTextsIsThatOfTheEncodings)
{
    Random random;
    TextAtTheEdge<char> narrow;
    TextAtTheEdge<wchar_t> wide;
    for (int round = 0; round < Rounds; ++round)
    {
        const std::u32string codePoints = random.CodePoints(LongestText / 4);
        const std::string utf8 = ToUtf8(codePoints);
        const std::wstring utf16 = ToUtf16(codePoints);
        ASSERT_EQ(Widen(narrow.Place(utf8)), utf16) << "round " << round << " of seed " << Seed;
        ASSERT_EQ(Narrow(wide.Place(utf16)), utf8) << "round " << round << " of seed " << Seed;
    }
    PrintCount("texts converted", 2 * Rounds);
}

TEST(TextConversion, OfAnyUnitsReplacesLoneSurrogatesAlone)
{
    Random random;
    TextAtTheEdge<wchar_t> wide;
    static constexpr wchar_t edges[] = {0xD7FF, 0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xD83D, 0xDE00, L'a', 0};
    for (int round = 0; round < Rounds; ++round)
    {
        std::wstring units(random.Below(LongestText + 1), L'\0');
        std::generate(units.begin(), units.end(), [&] { return edges[random.Below(std::size(edges))]; });
        ASSERT_EQ(Narrow(wide.Place(units)), ToUtf8(FromUtf16(units))) << "round " << round << " of seed " << Seed;
    }
    PrintCount("texts converted", Rounds);
}

TEST(TextConversion, OfAnyBytesKeepsWhatIsWellFormedAndReplacesTheRest)
{
    Random random;
    TextAtTheEdge<char> narrow;
    static constexpr unsigned char edges[] = {0x00, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xC1, 0xC2,
                                              0xDF, 0xE0, 0xE4, 0xED, 0xEF, 0xF0, 0xF4, 0xF5, 0xF8, 0xFE, 0xFF};
    for (int round = 0; round < Rounds; ++round)
    {
        std::string bytes(random.Below(LongestText + 1), '\0');
        std::generate(bytes.begin(), bytes.end(),
                      [&] { return static_cast<char>(edges[random.Below(std::size(edges))]); });
        const std::wstring widened = Widen(narrow.Place(bytes));
        ASSERT_LE(widened.size(), bytes.size()) << "round " << round << " of seed " << Seed;
        ASSERT_EQ(Narrow(widened), ToUtf8(FromUtf16(widened))) << "round " << round << " of seed " << Seed;
        // A platform may stop converting at a truncated sequence at the end; after these letters it does not.
        const std::string completed = bytes + "xyz";
        ASSERT_EQ(WithoutReplacements(Widen(completed)), WithoutReplacements(WellFormedParts(completed)))
            << "round " << round << " of seed " << Seed;
    }
    PrintCount("texts converted", Rounds);
}

TEST(TextConversion, OfAMegabyteIsWhole)
{
    constexpr std::size_t megabyte = 1024 * 1024;
    EXPECT_TRUE(Widen(std::string(megabyte, 'a')) == std::wstring(megabyte, L'a'));
    EXPECT_EQ(Narrow(std::wstring(megabyte, L'\u4E2D')).size(), 3 * megabyte);
    EXPECT_EQ(WithoutReplacements(Widen(std::string(megabyte, '\xFF'))), L"");
    EXPECT_EQ(Narrow(std::wstring(megabyte, static_cast<wchar_t>(0xD800))).size(), 3 * megabyte);
}

} // namespace OrlindexTest
