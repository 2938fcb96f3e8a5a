#ifndef ORLINDEX_FUZZ_PLATFORM_WINDOWS_H
#define ORLINDEX_FUZZ_PLATFORM_WINDOWS_H

// The platform's conversions and the runtime's bounded copy, as far as the natively fuzzed code calls them. They use
// the caller's memory up to its last character, so that the address sanitizer detects a wrong size.

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

#include "support/Encodings.h"

using DWORD = unsigned;

constexpr unsigned CP_UTF8 = 65001;
constexpr DWORD MB_ERR_INVALID_CHARS = 0x08;
constexpr DWORD WC_ERR_INVALID_CHARS = 0x80;

/// Returns what the platform returns: the size if there is no buffer, 0 if the text does not fit.
template <class Character>
int ReturnConverted(const std::basic_string<Character>& converted, Character* target, int capacity)
{
    const int size = static_cast<int>(converted.size());
    if (capacity == 0)
        return size;
    if (capacity < size)
        return 0;
    converted.copy(target, converted.size());
    return size;
}

inline int MultiByteToWideChar(unsigned, DWORD flags, const char* text, int length, wchar_t* target, int capacity)
{
    const std::string_view bytes(text, static_cast<std::size_t>(length));
    const auto characters = OrlindexTest::FromUtf8(bytes);
    // An ill-formed text does not survive the way there and back.
    if ((flags & MB_ERR_INVALID_CHARS) != 0 && OrlindexTest::ToUtf8(characters) != bytes)
        return 0;
    return ReturnConverted(OrlindexTest::ToUtf16(characters), target, capacity);
}

inline int WideCharToMultiByte(unsigned, DWORD flags, const wchar_t* text, int length, char* target, int capacity,
                               const char*, int*)
{
    const std::wstring_view units(text, static_cast<std::size_t>(length));
    const auto characters = OrlindexTest::FromUtf16(units);
    if ((flags & WC_ERR_INVALID_CHARS) != 0 && OrlindexTest::ToUtf16(characters) != units)
        return 0;
    return ReturnConverted(OrlindexTest::ToUtf8(characters), target, capacity);
}

inline int strcpy_s(char* target, std::size_t capacity, const char* text)
{
    const std::size_t size = std::strlen(text) + 1;
    if (!target || size > capacity)
        return EINVAL;
    std::memcpy(target, text, size);
    return 0;
}

#endif
