// Lines of any units, written to streams that accept some of them: the output decodes to what was written.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <ostream>
#include <streambuf>
#include <string>

#include "ByteReader.h"
#include "Require.h"
#include "base/ConsoleStream.h"

using namespace Kestrany::IdentityServices;
using OrlindexTest::ByteReader;
using OrlindexTest::Require;

namespace {

/// Accepts the units below a limit.
class LimitedBuffer : public std::wstreambuf
{
public:
    explicit LimitedBuffer(std::uint32_t limit) : limit_(limit) {}

    const std::wstring& Kept() const { return kept_; }

protected:
    int_type overflow(int_type character) override
    {
        const wchar_t unit = traits_type::to_char_type(character);
        if (static_cast<std::uint32_t>(unit) >= limit_)
            return traits_type::eof();
        kept_ += unit;
        return character;
    }

private:
    std::uint32_t limit_;
    std::wstring kept_;
};

/// '<' begins an escape, so lines here do not contain it.
std::wstring MakeLine(ByteReader& bytes)
{
    static constexpr unsigned edges[] = {0xD7FF, 0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xFFFD, 0x7F, 0x80, 0xD83D};
    std::wstring line;
    while (!bytes.IsEmpty())
    {
        const unsigned first = bytes.Byte();
        const unsigned unit = first < 64    ? first
                              : first < 192 ? edges[first % std::size(edges)]
                                            : (first << 8 | bytes.Byte()) - 0xC000 + 0x100 * bytes.Byte();
        if (unit != '<' && unit != 0xFFFF) // 0xFFFF is the end of a stream of 16-bit characters.
            line += static_cast<wchar_t>(unit & 0xFFFF);
    }
    return line;
}

bool IsPairAt(const std::wstring& text, std::size_t at)
{
    return at + 1 < text.size() && text[at] >= 0xD800 && text[at] <= 0xDBFF && text[at + 1] >= 0xDC00 &&
           text[at + 1] <= 0xDFFF;
}

/// Code points, with a lone surrogate as itself.
std::u32string Decode(const std::wstring& text)
{
    std::u32string decoded;
    for (std::size_t at = 0; at < text.size(); ++at)
    {
        auto codePoint = static_cast<char32_t>(text[at]);
        if (IsPairAt(text, at))
            codePoint = (codePoint << 10) + static_cast<char32_t>(text[++at]) - 0x35FDC00;
        decoded += codePoint;
    }
    return decoded;
}

/// The same for a text with escaped code points such as <U+4E2D>.
std::u32string DecodeEscaped(const std::wstring& text)
{
    std::u32string decoded;
    for (std::size_t at = 0; at < text.size();)
    {
        const std::size_t escape = (std::min)(text.find(L"<U+", at), text.size());
        decoded += Decode(text.substr(at, escape - at));
        if (escape == text.size())
            break;
        wchar_t* end = nullptr;
        decoded += static_cast<char32_t>(std::wcstoul(text.c_str() + escape + 3, &end, 16));
        Require(*end == L'>' && end - (text.c_str() + escape) >= 7, "an escape has four digits or more, and an end");
        at = static_cast<std::size_t>(end - text.c_str()) + 1;
    }
    return decoded;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    ByteReader bytes(data, size);
    static constexpr std::uint32_t limits[] = {0x80, 0x100, 0xD800, 0x10000};
    LimitedBuffer buffer(limits[bytes.Below(4)]);
    std::wostream stream(&buffer);
    const bool failed = bytes.Flag();
    if (failed)
        stream.setstate(std::ios::failbit);
    const std::wstring line = MakeLine(bytes);

    WriteConsoleLine(stream, line);

    const std::wstring& kept = buffer.Kept();
    Require(stream.rdstate() == (failed ? std::ios::failbit : std::ios::goodbit), "the stream's state is kept");
    Require(!kept.empty() && kept.back() == L'\n', "a line end comes last");
    Require(DecodeEscaped(kept.substr(0, kept.size() - 1)) == Decode(line), "no character is lost or changed");
    return 0;
}
