#include "base/ConsoleStream.h"

#include <cstdint>
#include <cstdio>
#include <ostream>
#include <streambuf>

namespace Kestrany::IdentityServices {
namespace {

bool Put(std::wstreambuf& buffer, wchar_t c)
{
    using Traits = std::wstreambuf::traits_type;
    return !Traits::eq_int_type(buffer.sputc(c), Traits::eof());
}

bool IsHighSurrogate(wchar_t c)
{
    return c >= 0xD800 && c <= 0xDBFF;
}

bool IsLowSurrogate(wchar_t c)
{
    return c >= 0xDC00 && c <= 0xDFFF; // not covered: A branch of the compiler; both bounds are fuzzed natively.
}

void PutCodePoint(std::wstreambuf& buffer, std::uint32_t codePoint)
{
    char text[16];
    std::snprintf(text, sizeof text, "<U+%04X>", static_cast<unsigned>(codePoint));
    for (const char* c = text; *c; ++c)
        Put(buffer, static_cast<wchar_t>(*c));
}

/// Writes the character at `position`; returns the position after it.
std::size_t PutCharacter(std::wstreambuf& buffer, const std::wstring& line, std::size_t position)
{
    const wchar_t first = line[position];
    if (IsHighSurrogate(first) && position + 1 < line.size() && IsLowSurrogate(line[position + 1]))
    {
        // Writes both halves or the code point: a stream that accepts only the first half would consume the second.
        const wchar_t second = line[position + 1];
        if (!Put(buffer, first) || !Put(buffer, second))
            PutCodePoint(buffer, 0x10000 + ((static_cast<std::uint32_t>(first) - 0xD800) << 10) +
                                     (static_cast<std::uint32_t>(second) - 0xDC00));
        return position + 2;
    }
    if (!Put(buffer, first))
        PutCodePoint(buffer, static_cast<std::uint32_t>(first));
    return position + 1;
}

} // namespace

void WriteConsoleLine(std::wostream& stream, const std::wstring& line)
{
    // Uses the buffer, not the stream: a failed insertion would set the stream's error state and block what the host
    // writes next.
    std::wstreambuf* buffer = stream.rdbuf();
    if (!buffer)
        return;
    const bool failedBefore = std::ferror(stdout) != 0;
    for (std::size_t position = 0; position < line.size();)
        position = PutCharacter(*buffer, line, position);
    Put(*buffer, L'\n');
    buffer->pubsync();
    if (!failedBefore)
        std::clearerr(stdout); // Characters that cannot be encoded set the error flag of the C stream.
}

} // namespace Kestrany::IdentityServices
