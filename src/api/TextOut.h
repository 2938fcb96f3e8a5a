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

// Copies texts into a caller's buffer.

/// Copies a text with its terminating zero into a buffer of `capacity` bytes by the runtime's bounded copy. If the
/// buffer is null or too small, the runtime empties it if it can, and calls its invalid-parameter handler: the host's
/// own if it installed one, otherwise the process ends.
inline void BoundedCopy(char* target, std::size_t capacity, const char* text)
{
    strcpy_s(target, capacity, text);
}

/// Converts a caller's size in bytes to the capacity for the copy. A negative size is not rejected: by contract it is
/// sign-extended and compares as very large.
inline std::size_t CallerCapacity(std::int32_t size)
{
    return static_cast<std::size_t>(static_cast<std::int64_t>(size));
}

/// A zero-filled buffer for a text that the plugin writes.
template <std::size_t Units>
struct PluginText
{
    std::array<wchar_t, Units> buffer = {};

    static constexpr int Capacity = static_cast<int>(Units);
    wchar_t* Data() { return buffer.data(); }
    /// The text up to its first zero; the whole buffer if the plugin wrote no zero.
    std::wstring_view Text() const
    {
        const auto end = std::find(buffer.begin(), buffer.end(), L'\0');
        return {buffer.data(), static_cast<std::size_t>(end - buffer.begin())};
    }
};

/// Copies a text as UTF-8 into the caller's buffer. Returns `result`, or IdBufferTooSmall with the buffer unchanged.
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
        std::memcpy(out.buffer, utf8, size + 1); // It fits, and the bounded copy is slow: it copies byte by byte.
    else
        BoundedCopy(out.buffer, capacity, utf8);
    return result;
}

} // namespace Kestrany::IdentityServices

#endif
