#ifndef ORLINDEX_API_TEXTOUT_H
#define ORLINDEX_API_TEXTOUT_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "base/Text.h"
#include "orlindex/talix.h"

namespace Kestrany::IdentityServices {

// Texts that go out into a caller's buffer.

/// Copies a text with its terminating zero into a buffer of `capacity` bytes by the runtime's bounded copy. A buffer
/// that is null or too small is emptied where it can be, and the runtime's invalid-parameter handler is called: the
/// host's own where it installed one, else the process ends.
inline void BoundedCopy(char* target, std::size_t capacity, const char* text)
{
    strcpy_s(target, capacity, text);
}

/// A caller's size, a signed number of bytes, as the capacity that the copy is told. A negative one is not refused: by
/// contract it is widened with its sign and compares as very large.
inline std::size_t CallerCapacity(std::int32_t size)
{
    return static_cast<std::size_t>(static_cast<std::int64_t>(size));
}

/// A zero-filled buffer that the plugin writes a text into.
template <std::size_t Units>
struct PluginText
{
    std::array<wchar_t, Units> buffer = {};

    static constexpr int Capacity = static_cast<int>(Units);
    wchar_t* Data() { return buffer.data(); }
    /// Up to its first zero; a plugin that forgets the zero does not lead beyond the buffer.
    std::wstring_view Text() const
    {
        const auto end = std::find(buffer.begin(), buffer.end(), L'\0');
        return {buffer.data(), static_cast<std::size_t>(end - buffer.begin())};
    }
};

/// Copies a text as UTF-8 into the caller's buffer. Answers `result`, or IdBufferTooSmall with the buffer untouched.
template <std::size_t Units>
talix_status_code CopyTextOut(const PluginText<Units>& text, const talix_buffer& out, talix_status_code result)
{
    char utf8[Units * Utf8BytesPerUnit + 1];
    const std::size_t size = NarrowInto(utf8, text.Text());
    utf8[size] = '\0';
    const std::size_t capacity = CallerCapacity(out.size);
    if (capacity <= size)
        return IdBufferTooSmall;
    if (out.buffer)
        std::memcpy(out.buffer, utf8, size + 1); // It fits; the bounded copy goes byte by byte.
    else
        BoundedCopy(out.buffer, capacity, utf8);
    return result;
}

} // namespace Kestrany::IdentityServices

#endif
