// Texts of any bytes and any units, converted and returned to callers: no access outside their memory, and a round trip
// returns the same text.

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "ByteReader.h"
#include "Require.h"
#include "api/TextOut.h"
#include "base/Text.h"
#include "support/Encodings.h"

using namespace Kestrany::IdentityServices;
using OrlindexTest::ByteReader;
using OrlindexTest::FromUtf16;
using OrlindexTest::FromUtf8;
using OrlindexTest::Require;
using OrlindexTest::ToUtf16;
using OrlindexTest::ToUtf8;

namespace {

constexpr std::size_t MostUnits = 16;
constexpr char Untouched = '\x55';

std::wstring MakeUnits(ByteReader& bytes, std::size_t most)
{
    static constexpr unsigned edges[] = {0xD7FF, 0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xFFFF, 0x7F, 0x80, 0x7FF};
    std::wstring units;
    while (!bytes.IsEmpty() && units.size() < most)
    {
        const unsigned first = bytes.Byte();
        units += static_cast<wchar_t>(first < 128   ? first
                                      : first < 224 ? edges[first % std::size(edges)]
                                                    : first << 8 | bytes.Byte());
    }
    return units;
}

void WidenAnything(const std::string& text)
{
    const std::wstring wide = Widen(text);
    Require(wide.size() <= text.size(), "no text becomes more units than it has bytes");
    const std::string narrow = Narrow(wide);
    Require(narrow == ToUtf8(FromUtf16(wide)), "nothing is lost on the way back");
    Require(Widen(narrow) == wide, "what was converted once is well formed");
    const bool isWellFormed = ToUtf8(FromUtf8(text)) == text;
    Require(WidenStrictly(text) == (isWellFormed ? std::optional(wide) : std::nullopt),
            "strict: well-formed texts alone");
    if (isWellFormed)
        Require(narrow == text, "a well-formed text comes back");
}

void NarrowAnything(const std::wstring& units)
{
    const std::string narrow = Narrow(units);
    Require(narrow == ToUtf8(FromUtf16(units)), "lone surrogates are replaced, and nothing else");
    const bool isWellFormed = ToUtf16(FromUtf16(units)) == units;
    Require(NarrowStrictly(units) == (isWellFormed ? std::optional(narrow) : std::nullopt),
            "strict: well-formed texts alone");
    std::vector<char> memory(units.size() * Utf8BytesPerUnit, Untouched);
    const std::size_t size = NarrowInto(memory.data(), units);
    Require(std::string(memory.data(), size) == narrow, "both conversions agree");
}

/// What a caller's buffer of some size receives of the plugin's text.
void GiveToCaller(ByteReader& bytes)
{
    PluginText<MostUnits> text;
    std::vector<char> buffer(bytes.Below(MostUnits * Utf8BytesPerUnit + 3), Untouched);
    const std::wstring units = MakeUnits(bytes, MostUnits);
    std::copy(units.begin(), units.end(), text.Data());
    const std::string expected = ToUtf8(FromUtf16(units.substr(0, units.find(L'\0'))));

    const talix_buffer out = {buffer.data(), static_cast<std::int32_t>(buffer.size())};
    const talix_status_code status = CopyTextOut(text, out, IdSuccess);

    const bool fits = expected.size() < buffer.size();
    Require(status == (fits ? IdSuccess : IdBufferTooSmall), "a text fits where its zero does");
    const std::size_t written = fits ? expected.size() + 1 : 0;
    if (fits)
        Require(expected == buffer.data(), "the whole text arrives, with its zero");
    Require(std::all_of(buffer.begin() + static_cast<std::ptrdiff_t>(written), buffer.end(),
                        [](char c) { return c == Untouched; }),
            "what lies behind the text is untouched");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    ByteReader bytes(data, size);
    switch (bytes.Below(3))
    {
    case 0:
        WidenAnything(bytes.Rest());
        break;
    case 1:
        NarrowAnything(MakeUnits(bytes, size));
        break;
    default:
        GiveToCaller(bytes);
    }
    return 0;
}
