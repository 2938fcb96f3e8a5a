// Replacing references, compared with the regular expression that defines a reference.

#include <cstdint>
#include <iterator>
#include <string>

#include "ByteReader.h"
#include "Require.h"
#include "locate/PathVariables.h"
#include "support/PathVariablePattern.h"

using namespace Kestrany::IdentityServices;
using OrlindexTest::ByteReader;
using OrlindexTest::ExpandByPattern;
using OrlindexTest::Expansion;
using OrlindexTest::Require;

namespace {

/// The regular expression recurses for each character.
constexpr std::size_t LongestForPattern = 512;

/// Half of all bytes become a character that is significant here.
wchar_t MakeCharacter(unsigned byte)
{
    static constexpr wchar_t special[] = L"%%%%%%ab\n\r\u2028\u2029\u0085\u2027\u202A\v\f\t \\";
    if (byte == 255)
        return L'\0';
    if (byte >= 128)
        return special[(byte - 128) % (std::size(special) - 1)];
    return static_cast<wchar_t>(byte);
}

std::wstring MakeText(ByteReader& bytes)
{
    std::wstring text;
    while (!bytes.IsEmpty())
        text += MakeCharacter(bytes.Byte());
    return text;
}

/// Some names have a value, which may look like a reference itself.
bool Lookup(const std::wstring& name, std::wstring& value)
{
    if (name.size() % 2 == 0)
        return false;
    value = L"<%" + name + L"%>";
    return true;
}

Expansion Expand(const std::wstring& text)
{
    Expansion expansion;
    expansion.text = text;
    expansion.matches = ExpandPathVariables(expansion.text, [&](const std::wstring& name, std::wstring& value) {
        expansion.names.push_back(name);
        return Lookup(name, value);
    });
    return expansion;
}

void RequirePossible(const Expansion& expansion)
{
    Require(expansion.matches >= 0 && static_cast<std::size_t>(expansion.matches) == expansion.names.size(),
            "every reference is looked up once");
    for (const std::wstring& name : expansion.names)
        Require(name.find_first_of(L"%\n\r\u2028\u2029") == std::wstring::npos, "no name spans lines or percent signs");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    ByteReader bytes(data, size);
    const std::wstring text = MakeText(bytes);
    const Expansion expansion = Expand(text);
    RequirePossible(expansion);
    if (text.size() > LongestForPattern)
        return 0;
    const Expansion expected = ExpandByPattern(text, Lookup);
    Require(expansion.text == expected.text, "the text is the pattern's");
    Require(expansion.matches == expected.matches, "the count is the pattern's");
    Require(expansion.names == expected.names, "the names are the pattern's");
    return 0;
}
